// SPDX-License-Identifier: MIT
#include "platform/posix/terminal_device.h"

#include <array>
#include <cstdio>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

namespace orvanta {
namespace {

using PathBuffer = std::array<char, 256>;

bool isPipe(int descriptor) {
    struct stat status = {};
    return ::fstat(descriptor, &status) == 0 && S_ISFIFO(status.st_mode);
}

/// Terminals by their own name, because on some systems opening /dev/fd only duplicates.
bool findPath(int descriptor, PathBuffer& path) {
    if (::isatty(descriptor) && ::ttyname_r(descriptor, path.data(), path.size()) == 0) {
        return true;
    }
    std::snprintf(path.data(), path.size(), "/dev/fd/%d", descriptor);
    return ::isatty(descriptor) || isPipe(descriptor);
}

} // namespace

std::optional<TerminalSize> terminalSize(int descriptor) {
    if (!::isatty(descriptor)) {
        return std::nullopt;
    }
    winsize size = {};
    ::ioctl(descriptor, TIOCGWINSZ, &size);
    return TerminalSize{size.ws_col > 0 ? size.ws_col : 80, size.ws_row > 0 ? size.ws_row : 24};
}

bool isInForeground(int descriptor) {
    const pid_t owner = ::tcgetpgrp(descriptor);
    return owner < 0 || owner == ::getpgrp();
}

bool isEchoed(int input, int output) {
    struct stat in = {};
    struct stat out = {};
    termios settings = {};
    return ::isatty(input) && ::isatty(output) && ::fstat(input, &in) == 0 &&
           ::fstat(output, &out) == 0 && in.st_rdev == out.st_rdev &&
           ::tcgetattr(input, &settings) == 0 && (settings.c_lflag & ECHO) != 0;
}

FileDescriptor reopenNonBlocking(int descriptor, int accessMode) {
    PathBuffer path = {};
    if (!findPath(descriptor, path)) {
        return {};
    }
    FileDescriptor reopened(::open(path.data(), accessMode | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    const int flags = reopened.isOpen() ? ::fcntl(reopened.get(), F_GETFL) : 0;
    return (flags & O_NONBLOCK) != 0 ? std::move(reopened) : FileDescriptor();
}

} // namespace orvanta
