// SPDX-License-Identifier: MIT
#include "integration/crash_points/reading_calls.h"

#include "integration/crash_points/call_paths.h"
#include "integration/held_calls.h"

#include <fcntl.h>
#include <sys/syscall.h>
#include <vector>

namespace orvanta {
namespace {

constexpr int kNone = -1;

struct Kind {
    unsigned number;
    const char* name;
    int directory; ///< the argument that a path counts from, or that is the open file itself
    int path;      ///< the argument that is one
    bool opens = false;
};

const std::vector<Kind> kKinds = {
#ifdef SYS_open
    {SYS_open, "open", kNone, 0, true},
    {SYS_stat, "stat", kNone, 0},
    {SYS_lstat, "lstat", kNone, 0},
    {SYS_access, "access", kNone, 0},
    {SYS_readlink, "readlink", kNone, 0},
#endif
#ifdef SYS_faccessat2
    {SYS_faccessat2, "faccessat2", 0, 1},
#endif
    {SYS_openat, "openat", 0, 1, true},
    {SYS_newfstatat, "fstatat", 0, 1},
    {SYS_statx, "statx", 0, 1},
    {SYS_faccessat, "faccessat", 0, 1},
    {SYS_readlinkat, "readlinkat", 0, 1},
    {SYS_fstat, "fstat", 0, kNone},
    {SYS_getdents64, "getdents", 0, kNone},
};

/// What is opened so is not only read.
constexpr unsigned kOpensToChange = O_CREAT | O_TRUNC | O_WRONLY;

} // namespace

int submitReadingCalls() {
    HeldCalls calls;
    for (const Kind& kind : kKinds) {
        calls.add(kind.number);
    }
    return calls.install();
}

std::optional<ReadingCall> readingCall(const seccomp_notif& call) {
    const auto argument = [&](int number, std::uint64_t missing) {
        return number == kNone ? missing : call.data.args[number];
    };
    for (const Kind& kind : kKinds) {
        if (kind.number != static_cast<unsigned>(call.data.nr)) {
            continue;
        }
        if (kind.opens && (call.data.args[kind.path + 1] & kOpensToChange) != 0) {
            return std::nullopt;
        }
        const auto process = static_cast<pid_t>(call.pid);
        const auto directory = argument(kind.directory, static_cast<std::uint64_t>(AT_FDCWD));
        return ReadingCall{kind.name, absolutePath(process, directory, argument(kind.path, 0)),
                           kind.opens};
    }
    return std::nullopt;
}

} // namespace orvanta
