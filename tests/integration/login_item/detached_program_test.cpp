// SPDX-License-Identifier: MIT
#include "platform/linux/detached_program.h"

#include <QFile>
#include <QTemporaryDir>

#include <csignal>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

namespace orvanta {
namespace {

constexpr int kDescriptor = 200;
/// Higher ones are the C library's own, which it leaves ignored in whatever it starts.
constexpr quint64 kSignalsOfPrograms = 0x7fffffff;

/// A shell, started while this process has what it must not inherit.
class DetachedProgram : public testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(::dup2(STDERR_FILENO, kDescriptor), kDescriptor); }
    DetachedProgram() {
        sigset_t blocked;
        sigemptyset(&blocked);
        sigaddset(&blocked, SIGUSR1);
        ::pthread_sigmask(SIG_BLOCK, &blocked, nullptr);
        ::signal(SIGPIPE, SIG_IGN);
    }
    ~DetachedProgram() override {
        ::close(kDescriptor);
        ::signal(SIGPIPE, SIG_DFL);
        sigset_t blocked;
        sigemptyset(&blocked);
        sigaddset(&blocked, SIGUSR1);
        ::pthread_sigmask(SIG_UNBLOCK, &blocked, nullptr);
    }

    /// What the commands write to `$NOTE`, after their end.
    QByteArray noteOf(const QByteArray& commands) const {
        const QString path = m_folder.filePath(QStringLiteral("note"));
        EnvironmentVariables variables;
        variables.set("NOTE", QFile::encodeName(path));
        const auto pid = startDetached({"/bin/sh", "-c", commands}, variables);
        EXPECT_TRUE(pid);
        int status = -1;
        EXPECT_EQ(::waitpid(pid.value_or(0), &status, 0), pid.value_or(0));
        EXPECT_EQ(status, 0);
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    /// One of the sets of signals that the system tells of a process.
    quint64 signalsOf(const QByteArray& name) const {
        const QByteArray line = noteOf("while read -r key value; do\n"
                                       "    [ $key != " +
                                       name +
                                       ": ] || echo $value\n"
                                       "done < /proc/$$/status > \"$NOTE\"\n");
        bool isNumber = false;
        const quint64 signals = line.trimmed().toULongLong(&isNumber, 16);
        EXPECT_TRUE(isNumber) << line.toStdString();
        return signals;
    }

private:
    QTemporaryDir m_folder;
};

TEST_F(DetachedProgram, ItsStandardStreamsLeadNowhere) {
    EXPECT_EQ(noteOf("for stream in 0 1 2; do\n"
                     "    [ /proc/$$/fd/$stream -ef /dev/null ] && echo $stream >> \"$NOTE\"\n"
                     "done\n"),
              "0\n1\n2\n");
}

TEST_F(DetachedProgram, HasNoOtherDescriptorOfOurs) {
    EXPECT_EQ(noteOf("[ -e /proc/$$/fd/200 ] || echo none > \"$NOTE\"\n"), "none\n");
}

TEST_F(DetachedProgram, LeadsASessionOfItsOwn) {
    EXPECT_EQ(noteOf("read -r pid name state parent group session rest < /proc/$$/stat\n"
                     "[ $session = $$ ] && echo own > \"$NOTE\"\n"),
              "own\n");
}

TEST_F(DetachedProgram, HasNoSignalBlocked) {
    EXPECT_EQ(signalsOf("SigBlk"), 0U);
}

TEST_F(DetachedProgram, HasNoSignalIgnored) {
    EXPECT_EQ(signalsOf("SigIgn") & kSignalsOfPrograms, 0U);
}

TEST_F(DetachedProgram, HasExactlyTheGivenEnvironment) {
    const QByteArray variables = noteOf("exec /usr/bin/env > \"$NOTE\"\n");
    for (const QByteArray& line : variables.trimmed().split('\n')) {
        const QByteArray name = line.left(line.indexOf('='));
        // The shell sets the others itself.
        EXPECT_TRUE(name == "NOTE" || name == "PWD" || name == "OLDPWD" || name == "SHLVL" ||
                    name == "_")
            << line.toStdString();
    }
    EXPECT_TRUE(variables.contains("NOTE="));
}

TEST(DetachedProgramOfNobody, IsNotStarted) {
    EXPECT_EQ(startDetached({"/gone/program"}, {}), std::nullopt);
}

} // namespace
} // namespace orvanta
