// SPDX-License-Identifier: MIT
#include "integration/file_tree/write_file_test.h"

#include "base/json.h"

#include <csignal>
#include <cstddef>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>

namespace orvanta {
namespace {

constexpr int kNoFilter = 77;

/// From now on every truncation by this process fails, as on a failing disk.
bool refuseTruncations() {
    sock_filter program[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_ftruncate, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EIO),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    const sock_fprog filter{4, program};
    return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) == 0;
}

class FailedTruncationTest : public WriteFileTest {
protected:
    /// 0 when writing `bytes` under both restrictions fails for `reason`.
    int failsToWrite(const QByteArray& bytes, rlim_t largestFile, const std::string& reason) const {
        ::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{largestFile, largestFile};
        if (::setrlimit(RLIMIT_FSIZE, &limit) != 0 || !refuseTruncations()) {
            return kNoFilter;
        }
        return writeFailure("record", bytes) == "“~/record” could not be written: " + reason + "."
                   ? 0
                   : 1;
    }
};

TEST_F(FailedTruncationTest, LeavesBlanksBehindARecordThatCouldNotGrow) {
    m_files.writeFile(path("record"), record(200));
    const int status =
        inChild([this] { return failsToWrite(record(3000), 1000, "File too large"); });
    if (status == kNoFilter) {
        GTEST_SKIP() << "NOT RUN: system calls cannot be filtered here.";
    }
    EXPECT_EQ(status, 0);
    const QByteArray left = contentsOf("record");
    EXPECT_EQ(left, record(200).leftJustified(1000, ' '));
    EXPECT_NO_THROW(JsonReader::parse(left));
}

TEST_F(FailedTruncationTest, LeavesBlanksBehindARecordThatIsShorterThanTheOneBefore) {
    m_files.writeFile(path("record"), record(900));
    const int status =
        inChild([this] { return failsToWrite(record(200), 1000, "Input/output error"); });
    if (status == kNoFilter) {
        GTEST_SKIP() << "NOT RUN: system calls cannot be filtered here.";
    }
    EXPECT_EQ(status, 0);
    const QByteArray left = contentsOf("record");
    EXPECT_EQ(left, record(200).leftJustified(900, ' '));
    EXPECT_NO_THROW(JsonReader::parse(left));
}

} // namespace
} // namespace orvanta
