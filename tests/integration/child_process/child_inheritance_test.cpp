// SPDX-License-Identifier: MIT
#include "tests/integration/child_process/launching_test.h"

#include "platform/posix/process_environment.h"

#include <QDir>

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace orvanta {
namespace {

class ChildInheritanceTest : public LaunchingTest {
protected:
    QByteArray report() { return report(optionsFor(m_record, QStringLiteral(CHILD_PROBE), {})); }

    QByteArray report(ChildProcessOptions options) {
        options.arguments = QStringList{QStringLiteral("report")} + options.arguments;
        m_launcher->launch(std::move(options));
        EXPECT_TRUE(runLoopUntil([&] { return m_record.hasExited(); }));
        EXPECT_TRUE(runLoopUntil([&] { return m_record.contains("streams "); }));
        return m_record.output;
    }

    /// The lines that begin with `word`, without it.
    QList<QByteArray> reported(const QByteArray& word) const {
        QList<QByteArray> values;
        for (const QByteArray& line : m_record.output.split('\n')) {
            if (line.startsWith(word + ' ')) {
                values.append(line.mid(word.size() + 1));
            }
        }
        return values;
    }

    ChildRecord m_record;
};

using Lines = QList<QByteArray>;

TEST_F(ChildInheritanceTest, OnlyTheThreeStreamsAreOpen) {
    const int file = ::open("/dev/null", O_RDONLY);
    const int far = ::fcntl(file, F_DUPFD, 900);
    int sockets[2];
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, sockets), 0);
    const int input = ::dup(STDIN_FILENO);
    ::dup2(sockets[0], STDIN_FILENO);
    report();
    ::dup2(input, STDIN_FILENO);
    for (const int descriptor : {file, far, sockets[0], sockets[1], input}) {
        ::close(descriptor);
    }
    EXPECT_EQ(reported("open"), (Lines{"0", "1", "2"})); // none of them non-blocking
    EXPECT_EQ(reported("input"), Lines{"null"});
    EXPECT_EQ(reported("output"), Lines{"pipe"});
    EXPECT_EQ(reported("error"), Lines{"pipe"});
    EXPECT_EQ(reported("streams"), Lines{"separate"});
}

TEST_F(ChildInheritanceTest, TheStreamsAreRightAlsoWhenOursAreClosed) {
    int saved[3];
    for (int stream = 0; stream < 3; ++stream) {
        saved[stream] = ::fcntl(stream, F_DUPFD_CLOEXEC, 100);
        ::close(stream);
    }
    const auto child = m_launcher->launch(
        optionsFor(m_record, QStringLiteral(CHILD_PROBE), {QStringLiteral("report")}));
    runLoopUntil([&] { return m_record.hasExited() && m_record.contains("streams "); });
    for (int stream = 0; stream < 3; ++stream) {
        ::dup2(saved[stream], stream);
        ::close(saved[stream]);
    }
    EXPECT_EQ(reported("open"), (Lines{"0", "1", "2"}));
    EXPECT_EQ(reported("input"), Lines{"null"});
    EXPECT_EQ(reported("streams"), Lines{"separate"});
}

TEST_F(ChildInheritanceTest, NoSignalIsBlockedOrIgnored) {
    sigset_t blocked;
    sigset_t previous;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGUSR1);
    sigaddset(&blocked, SIGTERM);
    ::pthread_sigmask(SIG_BLOCK, &blocked, &previous);
    const auto previousPipe = ::signal(SIGPIPE, SIG_IGN);
    const auto previousHangUp = ::signal(SIGHUP, SIG_IGN);
    report();
    ::signal(SIGHUP, previousHangUp);
    ::signal(SIGPIPE, previousPipe);
    ::pthread_sigmask(SIG_SETMASK, &previous, nullptr);
    EXPECT_EQ(reported("blocked"), Lines{});
    EXPECT_EQ(reported("ignored"), Lines{});
}

TEST_F(ChildInheritanceTest, TheEnvironmentIsTheOneGiven) {
    const char bytes[] = "caf\xe9 \xff";
    ::setenv("ORVANTA_TEST_EARLY", bytes, 1);
    auto options = optionsFor(m_record, QStringLiteral(CHILD_PROBE), {});
    const ProcessEnvironment captured;
    ::setenv("ORVANTA_TEST_LATE", "1", 1);
    ::setenv("ORVANTA_TEST_EARLY", "changed", 1);
    options.environment = captured.variables();
    options.environment.set("ORVANTA_TEST_ADDED", "a=b c");
    report(options);
    ::unsetenv("ORVANTA_TEST_EARLY");
    ::unsetenv("ORVANTA_TEST_LATE");

    Lines expected;
    for (const auto& [name, value] : options.environment.all()) {
        expected.append(name + '=' + value);
    }
    EXPECT_EQ(reported("variable"), expected);
    EXPECT_TRUE(expected.contains(QByteArray("ORVANTA_TEST_EARLY=") + bytes));
    EXPECT_TRUE(expected.contains("ORVANTA_TEST_ADDED=a=b c"));
    EXPECT_FALSE(m_record.contains("ORVANTA_TEST_LATE"));
}

TEST_F(ChildInheritanceTest, DirectoryArgumentsAndGroupAreItsOwn) {
    const QString odd = filePath(QStringLiteral("ein Verzeichnis, größer"));
    ASSERT_TRUE(QDir().mkpath(odd));
    auto options = optionsFor(m_record, QStringLiteral(CHILD_PROBE),
                              {QString(), QStringLiteral("with space"), QStringLiteral("größer")});
    options.workingDirectory = odd;
    report(options);
    EXPECT_EQ(reported("directory"), Lines{QDir(odd).canonicalPath().toUtf8()});
    EXPECT_EQ(reported("argument"), (Lines{CHILD_PROBE, "report", "", "with space", "größer"}));
    EXPECT_EQ(reported("group"), Lines{"own"});
}

} // namespace
} // namespace orvanta
