// SPDX-License-Identifier: MIT
#include "integration/crash_points/mutating_calls.h"

#include "integration/crash_points/call_paths.h"
#include "integration/held_calls.h"

#include <cstdint>
#include <fcntl.h>
#include <linux/fs.h>
#include <sys/syscall.h>
#include <vector>

namespace orvanta {
namespace {

struct Kind {
    unsigned number;
    const char* name;
    int path; ///< the argument that is one, or -1
    int file; ///< the argument that is a descriptor, when none is a path
};

constexpr int kNone = -1;

/// Everything that takes no look at its arguments. Not in every processor's list are the calls that
/// newer ones have replaced.
const std::vector<Kind> kKinds = {
#ifdef SYS_creat
    {SYS_creat, "creat", 0, kNone},
    {SYS_mkdir, "mkdir", 0, kNone},
    {SYS_rmdir, "rmdir", 0, kNone},
    {SYS_rename, "rename", 1, kNone},
    {SYS_link, "link", 1, kNone},
    {SYS_symlink, "symlink", 1, kNone},
    {SYS_unlink, "unlink", 0, kNone},
    {SYS_mknod, "mknod", 0, kNone},
    {SYS_chmod, "chmod", 0, kNone},
    {SYS_chown, "chown", 0, kNone},
    {SYS_lchown, "lchown", 0, kNone},
    {SYS_utime, "utime", 0, kNone},
    {SYS_utimes, "utimes", 0, kNone},
    {SYS_futimesat, "futimesat", 1, kNone},
#endif
#ifdef SYS_renameat
    {SYS_renameat, "renameat", 3, kNone},
#endif
#ifdef SYS_openat2
    {SYS_openat2, "openat2", 1, kNone},
#endif
#ifdef SYS_fchmodat2
    {SYS_fchmodat2, "fchmodat2", 1, kNone},
#endif
    {SYS_mkdirat, "mkdirat", 1, kNone},
    {SYS_renameat2, "renameat2", 3, kNone},
    {SYS_linkat, "linkat", 3, kNone},
    {SYS_symlinkat, "symlinkat", 2, kNone},
    {SYS_unlinkat, "unlinkat", 1, kNone},
    {SYS_mknodat, "mknodat", 1, kNone},
    {SYS_fchmodat, "fchmodat", 1, kNone},
    {SYS_fchownat, "fchownat", 1, kNone},
    {SYS_utimensat, "utimensat", 1, 0},
    {SYS_truncate, "truncate", 0, kNone},
    {SYS_setxattr, "setxattr", 0, kNone},
    {SYS_lsetxattr, "lsetxattr", 0, kNone},
    {SYS_removexattr, "removexattr", 0, kNone},
    {SYS_lremovexattr, "lremovexattr", 0, kNone},
    {SYS_fsetxattr, "fsetxattr", kNone, 0},
    {SYS_fremovexattr, "fremovexattr", kNone, 0},
    {SYS_fchmod, "fchmod", kNone, 0},
    {SYS_fchown, "fchown", kNone, 0},
    {SYS_ftruncate, "ftruncate", kNone, 0},
    {SYS_fallocate, "fallocate", kNone, 0},
    {SYS_write, "write", kNone, 0},
    {SYS_writev, "writev", kNone, 0},
    {SYS_pwrite64, "pwrite", kNone, 0},
    {SYS_pwritev, "pwritev", kNone, 0},
    {SYS_pwritev2, "pwritev2", kNone, 0},
    {SYS_copy_file_range, "copy_file_range", kNone, 2},
    {SYS_sendfile, "sendfile", kNone, 0},
    {SYS_splice, "splice", kNone, 2},
    {SYS_fsync, "fsync", kNone, 0},
    {SYS_fdatasync, "fdatasync", kNone, 0},
};

/// These depend on an argument.
const std::vector<Kind> kConditionalKinds = {
#ifdef SYS_open
    {SYS_open, "open", 0, kNone},
#endif
    {SYS_openat, "openat", 1, kNone},
    {SYS_ioctl, "ioctl", kNone, 0},
};

constexpr unsigned kOpensToChange = O_CREAT | O_TRUNC | O_WRONLY;

} // namespace

int submitMutatingCalls() {
    HeldCalls calls;
    for (const Kind& kind : kKinds) {
        calls.add(kind.number);
    }
#ifdef SYS_open
    calls.addIf(SYS_open, 1, BPF_JSET, kOpensToChange);
#endif
    calls.addIf(SYS_openat, 2, BPF_JSET, kOpensToChange);
    calls.addIf(SYS_ioctl, 1, BPF_JEQ, static_cast<std::uint32_t>(FICLONE));
    calls.addIf(SYS_ioctl, 1, BPF_JEQ, static_cast<std::uint32_t>(FICLONERANGE));
    return calls.install();
}

std::string describe(const seccomp_notif& call) {
    const auto process = static_cast<pid_t>(call.pid);
    for (const auto* kinds : {&kKinds, &kConditionalKinds}) {
        for (const Kind& kind : *kinds) {
            if (kind.number != static_cast<unsigned>(call.data.nr)) {
                continue;
            }
            // Some take a descriptor in place of a path that is null.
            const bool hasPath = kind.path != kNone && call.data.args[kind.path] != 0;
            return std::string(kind.name) + ' ' +
                   (hasPath ? textAt(process, call.data.args[kind.path])
                            : openFile(process, call.data.args[kind.file]));
        }
    }
    return "call " + std::to_string(call.data.nr);
}

} // namespace orvanta
