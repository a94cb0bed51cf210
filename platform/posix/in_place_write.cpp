// SPDX-License-Identifier: MIT
#include "platform/posix/in_place_write.h"

#include "platform/posix/file_copy.h"
#include "platform/posix/file_descriptor.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>

namespace orvanta {
namespace {

/// The system looks for SIGKILL between the pages of a write and ends the write there, so what fits
/// the first page of a file is written whole or not at all. No system has smaller pages.
constexpr qsizetype kPage = 4096;
/// Into what it is given at once the system puts pages as large as fit, and a virtual machine may
/// have to ask its host for large ones: in one piece an archive took up to ten times as long.
constexpr qsizetype kPiece = 64 * 1024;
constexpr mode_t kDefaultMode = 0666;
/// JSON may end in any number of them.
constexpr char kBlank = ' ';

int resultOf(int returned) {
    return returned < 0 ? errno : 0;
}

int writeAt(int file, const QByteArray& bytes, qsizetype offset) {
    qsizetype written = 0;
    while (written < bytes.size()) {
        const qsizetype piece = std::min(bytes.size() - written, kPiece);
        const ssize_t count = ::pwrite(file, bytes.constData() + written,
                                       static_cast<std::size_t>(piece), offset + written);
        if (count < 0 && errno != EINTR) {
            return errno;
        }
        written += count > 0 ? count : 0;
    }
    return 0;
}

/// Makes the file as long as what is to come, so that a full disk says so while the old contents
/// still stand.
int growWithBlanks(int file, qsizetype oldSize, qsizetype newSize) {
    if (newSize <= oldSize) {
        return 0;
    }
    const int error = writeAt(file, QByteArray(newSize - oldSize, kBlank), oldSize);
    if (error != 0) {
        // When this fails as well, there are blanks behind the old contents.
        [[maybe_unused]] const int ignored = ::ftruncate(file, oldSize);
    }
    return error;
}

int overwrite(int file, const QByteArray& bytes, qsizetype oldSize) {
    if (const int error = growWithBlanks(file, oldSize, bytes.size())) {
        return error;
    }
    if (const int error = writeAt(file, bytes.leftJustified(oldSize, kBlank), 0)) {
        return error;
    }
    return oldSize > bytes.size() ? resultOf(::ftruncate(file, bytes.size())) : 0;
}

/// A file that is complete before it has its name.
class HiddenFile {
public:
    explicit HiddenFile(const QByteArray& destination)
        : m_destination(destination), m_path(destination) {
        m_path.insert(m_path.lastIndexOf('/') + 1, '.');
        m_path += ".new";
    }
    HiddenFile(const HiddenFile&) = delete;
    HiddenFile& operator=(const HiddenFile&) = delete;
    ~HiddenFile() { ::unlink(m_path.constData()); }

    int write(const QByteArray& bytes) {
        // One that was left behind when this process was killed.
        ::unlink(m_path.constData());
        m_file = FileDescriptor(::open(m_path.constData(),
                                       O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                                       kDefaultMode));
        return m_file.isOpen() ? writeAt(m_file.get(), bytes, 0) : errno;
    }

    int keepMode(const struct stat& status) {
        return resultOf(::fchmod(m_file.get(), status.st_mode & kPermissions));
    }

    int takeName() { return resultOf(::rename(m_path.constData(), m_destination.constData())); }

private:
    const QByteArray m_destination;
    QByteArray m_path;
    FileDescriptor m_file;
};

int create(const QByteArray& path, const QByteArray& bytes) {
    HiddenFile file(path);
    const int error = file.write(bytes);
    return error != 0 ? error : file.takeName();
}

int replace(const QByteArray& path, const QByteArray& bytes, const struct stat& status) {
    HiddenFile file(path);
    if (const int error = file.write(bytes)) {
        return error;
    }
    const int error = file.keepMode(status);
    return error != 0 ? error : file.takeName();
}

/// Where the links of `path` lead; `path` itself when there is nothing.
QByteArray behindLinks(const QByteArray& path) {
    const std::unique_ptr<char, decltype(&std::free)> resolved(
        ::realpath(path.constData(), nullptr), &std::free);
    return resolved == nullptr ? path : QByteArray(resolved.get());
}

} // namespace

int writeInPlace(const QByteArray& path, const QByteArray& bytes) {
    const FileDescriptor file(
        ::open(path.constData(), O_WRONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!file.isOpen()) {
        return errno == ENOENT ? create(behindLinks(path), bytes) : errno;
    }
    struct stat status {};
    if (::fstat(file.get(), &status) != 0) {
        return errno;
    }
    if (!S_ISREG(status.st_mode)) {
        return EINVAL;
    }
    const qsizetype oldSize = status.st_size;
    if (std::max(oldSize, bytes.size()) > kPage) {
        return replace(behindLinks(path), bytes, status);
    }
    return overwrite(file.get(), bytes, oldSize);
}

} // namespace orvanta
