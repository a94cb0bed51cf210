// SPDX-License-Identifier: MIT
#include "integration/crash_points/mutating_calls.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <fcntl.h>
#include <linux/filter.h>
#include <linux/fs.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>
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

class FilterProgram {
public:
    void submit(unsigned number) {
        loadCallNumber();
        add(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, number, 0, 1));
        add(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_USER_NOTIF));
    }

    /// If `comparison` of that argument, of which 32 bits count, with `value` holds.
    void submitIf(unsigned number, int argument, std::uint16_t comparison, std::uint32_t value) {
        const auto offset = offsetof(seccomp_data, args) + sizeof(std::uint64_t) * argument;
        loadCallNumber();
        add(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, number, 0, 3));
        add(BPF_STMT(BPF_LD | BPF_W | BPF_ABS, static_cast<std::uint32_t>(offset)));
        add(BPF_JUMP(static_cast<std::uint16_t>(BPF_JMP | comparison | BPF_K), value, 0, 1));
        add(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_USER_NOTIF));
    }

    int install() {
        add(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
        const sock_fprog program{static_cast<std::uint16_t>(m_steps.size()), m_steps.data()};
        if (::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0) {
            return -1;
        }
        return static_cast<int>(::syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER,
                                          SECCOMP_FILTER_FLAG_NEW_LISTENER, &program));
    }

private:
    void loadCallNumber() { add(BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr))); }
    void add(sock_filter step) { m_steps.push_back(step); }

    std::vector<sock_filter> m_steps;
};

std::string textAt(pid_t process, std::uint64_t address) {
    constexpr std::uint64_t kPage = 4096;
    std::array<char, kPage> bytes{};
    const iovec local{bytes.data(), bytes.size() - 1};
    // What follows the text may not be there, so each page is asked for separately.
    const std::uint64_t inPage = kPage - address % kPage;
    const std::array<iovec, 2> remote{{
        {reinterpret_cast<void*>(address), inPage},
        {reinterpret_cast<void*>(address + inPage), kPage - inPage},
    }};
    if (::process_vm_readv(process, &local, 1, remote.data(), remote.size(), 0) <= 0) {
        return "(unreadable)";
    }
    return bytes.data();
}

std::string openFile(pid_t process, std::uint64_t descriptor) {
    const std::string link =
        "/proc/" + std::to_string(process) + "/fd/" + std::to_string(static_cast<int>(descriptor));
    std::array<char, 4096> target{};
    return ::readlink(link.c_str(), target.data(), target.size() - 1) > 0 ? target.data()
                                                                          : "(unreadable)";
}

} // namespace

int submitMutatingCalls() {
    FilterProgram program;
    for (const Kind& kind : kKinds) {
        program.submit(kind.number);
    }
#ifdef SYS_open
    program.submitIf(SYS_open, 1, BPF_JSET, kOpensToChange);
#endif
    program.submitIf(SYS_openat, 2, BPF_JSET, kOpensToChange);
    program.submitIf(SYS_ioctl, 1, BPF_JEQ, static_cast<std::uint32_t>(FICLONE));
    program.submitIf(SYS_ioctl, 1, BPF_JEQ, static_cast<std::uint32_t>(FICLONERANGE));
    return program.install();
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
