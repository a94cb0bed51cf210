// SPDX-License-Identifier: MIT
#include "platform/posix/staged_file.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>

namespace orvanta {
namespace {

int resultOf(int returned) {
    return returned < 0 ? errno : 0;
}

/// fsync of macOS stops at the cache of the disk.
int synchronise(int descriptor) {
#ifdef F_FULLFSYNC
    if (::fcntl(descriptor, F_FULLFSYNC) == 0) {
        return 0;
    }
#endif
    return resultOf(::fsync(descriptor));
}

/// Best effort: the file itself is safe, and some file systems refuse to sync a directory.
void synchroniseParent(const QByteArray& path) {
    const QByteArray parent = path.left(path.lastIndexOf('/') + 1);
    const FileDescriptor directory(
        ::open(parent.isEmpty() ? "." : parent.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (directory.isOpen()) {
        synchronise(directory.get());
    }
}

} // namespace

StagedFile::StagedFile(const QByteArray& destination)
    : m_destination(destination), m_temporary(destination + ".partial-XXXXXX") {}

StagedFile::~StagedFile() {
    if (m_file.isOpen()) {
        ::unlink(m_temporary.constData());
    }
}

int StagedFile::open() {
    m_file = FileDescriptor(::mkostemp(m_temporary.data(), O_CLOEXEC));
    return m_file.isOpen() ? 0 : errno;
}

int StagedFile::finish() {
    if (const int error = synchronise(m_file.get())) {
        return error;
    }
    if (const int error = takeName()) {
        return error;
    }
    synchroniseParent(m_destination);
    return 0;
}

/// A second link, unlike a rename, never replaces what is there. The first one goes with us. File
/// systems without such links are asked first.
int StagedFile::takeName() const {
    const char* const from = m_temporary.constData();
    const char* const to = m_destination.constData();
    const int error = resultOf(::link(from, to));
    if (error == 0 || error == EEXIST) {
        return error;
    }
    struct stat status {};
    return ::lstat(to, &status) == 0 ? EEXIST : resultOf(::rename(from, to));
}

} // namespace orvanta
