// SPDX-License-Identifier: MIT
// A sandbox that forbids copying within the kernel, as those of some containers do.
#include "integration/file_tree/write_file_test.h"
#include "platform/posix/file_copy.h"
#include "platform/posix/file_descriptor.h"

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>

#include <cerrno>
#include <cstddef>

namespace orvanta {
namespace {

constexpr int kNoSandbox = 100;

/// From now on copy_file_range fails with EPERM in this process.
bool forbidCopiesInKernel() {
    sock_filter program[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, __NR_copy_file_range, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EPERM),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    const sock_fprog filter{std::size(program), program};
    return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) == 0;
}

using ForbiddenCopyTest = WriteFileTest;

TEST_F(ForbiddenCopyTest, IsMadeOutsideTheKernel) {
    const QByteArray bytes = record(200'000);
    makeFile("from", bytes);
    makeFile("to", "");
    const int result = inChild([this] {
        const FileDescriptor from(::open(native("from").constData(), O_RDONLY));
        const FileDescriptor to(::open(native("to").constData(), O_WRONLY));
        return forbidCopiesInKernel() ? copyContents(from.get(), to.get()) : kNoSandbox;
    });
    if (result == kNoSandbox) {
        GTEST_SKIP() << "NOT RUN: this system has no sandbox for system calls.";
    }
    EXPECT_EQ(result, 0);
    EXPECT_TRUE(contentsOf("to") == bytes);
}

} // namespace
} // namespace orvanta
