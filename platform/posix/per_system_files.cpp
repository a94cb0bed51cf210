// SPDX-License-Identifier: MIT
#include "platform/posix/per_system_files.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>

#ifdef __APPLE__
#include <sys/clonefile.h>
#else
#include <linux/fs.h>
#include <sys/ioctl.h>
#endif

namespace orvanta {
namespace {

/// For file systems without an exclusive rename.
int renameAfterLook(const QByteArray& from, const QByteArray& to) {
    struct stat status {};
    if (::lstat(to.constData(), &status) == 0) {
        return EEXIST;
    }
    return ::rename(from.constData(), to.constData()) == 0 ? 0 : errno;
}

} // namespace

#ifdef __APPLE__

FileDescriptor createClone(int source, int directory, const QByteArray& name) {
    if (::fclonefileat(source, directory, name.constData(), CLONE_NOOWNERCOPY) != 0) {
        return FileDescriptor();
    }
    return FileDescriptor(::openat(directory, name.constData(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
}

int copyInKernel(int, int) {
    return 0;
}

int renameExclusively(const QByteArray& from, const QByteArray& to) {
    if (::renamex_np(from.constData(), to.constData(), RENAME_EXCL) == 0) {
        return 0;
    }
    return errno == ENOTSUP ? renameAfterLook(from, to) : errno;
}

std::array<timespec, 2> timesOf(const struct stat& status) {
    return {status.st_atimespec, status.st_mtimespec};
}

#else

namespace {

/// As much as one call may be asked to copy.
constexpr std::size_t kPiece = std::size_t{1} << 30;
constexpr mode_t kOwnerOnly = 0600;

bool meansUnable(int error) {
    // Sandboxes forbid the call with EPERM.
    return error == EXDEV || error == EINVAL || error == ENOSYS || error == EOPNOTSUPP ||
           error == EPERM;
}

} // namespace

FileDescriptor createClone(int source, int directory, const QByteArray& name) {
    FileDescriptor clone(::openat(directory, name.constData(),
                                  O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                                  kOwnerOnly));
    if (clone.isOpen() && ::ioctl(clone.get(), FICLONE, source) != 0) {
        clone.reset();
        ::unlinkat(directory, name.constData(), 0);
    }
    return clone;
}

int copyInKernel(int from, int to) {
    while (true) {
        const ssize_t count = ::copy_file_range(from, nullptr, to, nullptr, kPiece, 0);
        if (count == 0) {
            return 0;
        }
        if (count < 0 && errno != EINTR) {
            return meansUnable(errno) ? 0 : errno;
        }
    }
}

int renameExclusively(const QByteArray& from, const QByteArray& to) {
    if (::renameat2(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), RENAME_NOREPLACE) == 0) {
        return 0;
    }
    return errno == EINVAL || errno == ENOSYS ? renameAfterLook(from, to) : errno;
}

std::array<timespec, 2> timesOf(const struct stat& status) {
    return {status.st_atim, status.st_mtim};
}

#endif

} // namespace orvanta
