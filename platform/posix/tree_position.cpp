// SPDX-License-Identifier: MIT
#include "platform/posix/tree_position.h"

#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>

namespace orvanta {
namespace {

struct DirectoryCloser {
    void operator()(DIR* directory) const { ::closedir(directory); }
};

bool isDots(const QByteArray& name) {
    return name == "." || name == "..";
}

} // namespace

int TreePosition::enter(const QByteArray& name) {
    struct stat here {};
    if (::fstat(directory(), &here) != 0) {
        return errno;
    }
    FileDescriptor below;
    if (const int error = openDirectory(directory(), name, below)) {
        return error;
    }
    m_above.push_back({here.st_dev, here.st_ino});
    m_directory = std::move(below);
    return 0;
}

int TreePosition::leave(FileDescriptor& left) {
    FileDescriptor above;
    struct stat there {};
    if (const int error = openDirectory(directory(), "..", above)) {
        return error;
    }
    if (::fstat(above.get(), &there) != 0) {
        return errno;
    }
    if (there.st_dev != m_above.back().device || there.st_ino != m_above.back().number) {
        return ESTALE;
    }
    m_above.pop_back();
    left = std::exchange(m_directory, std::move(above));
    return 0;
}

int listDirectory(int directory, const QByteArray& name, std::vector<QByteArray>& names) {
    FileDescriptor own;
    if (const int error = openDirectory(directory, name, own)) {
        return error;
    }
    const std::unique_ptr<DIR, DirectoryCloser> listing(::fdopendir(own.get()));
    if (listing == nullptr) {
        return errno;
    }
    own.release();
    errno = 0;
    while (const dirent* entry = ::readdir(listing.get())) {
        if (!isDots(entry->d_name)) {
            names.emplace_back(entry->d_name);
        }
        errno = 0;
    }
    return errno;
}

int openDirectory(int directory, const QByteArray& name, FileDescriptor& opened) {
    opened = FileDescriptor(
        ::openat(directory, name.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    return opened.isOpen() ? 0 : errno;
}

} // namespace orvanta
