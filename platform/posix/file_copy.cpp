// SPDX-License-Identifier: MIT
#include "platform/posix/file_copy.h"

#include "platform/posix/per_system_files.h"

#include <array>
#include <cerrno>
#include <unistd.h>

namespace orvanta {
namespace {

int writeAll(int to, const char* bytes, ssize_t size) {
    while (size > 0) {
        const ssize_t count = ::write(to, bytes, static_cast<std::size_t>(size));
        if (count < 0 && errno != EINTR) {
            return errno;
        }
        bytes += count > 0 ? count : 0;
        size -= count > 0 ? count : 0;
    }
    return 0;
}

} // namespace

int copyContents(int from, int to) {
    if (const int error = copyInKernel(from, to)) {
        return error;
    }
    std::array<char, 64 * 1024> piece;
    while (true) {
        const ssize_t count = ::read(from, piece.data(), piece.size());
        if (count == 0) {
            return 0;
        }
        if (count < 0 && errno != EINTR) {
            return errno;
        }
        if (const int error = writeAll(to, piece.data(), count)) {
            return error;
        }
    }
}

int copyAttributes(const struct stat& status, int to) {
    if (::fchmod(to, status.st_mode & kPermissions) != 0) {
        return errno;
    }
    return ::futimens(to, timesOf(status).data()) == 0 ? 0 : errno;
}

} // namespace orvanta
