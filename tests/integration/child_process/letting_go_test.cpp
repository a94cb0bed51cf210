// SPDX-License-Identifier: MIT
#include "tests/integration/child_process/launching_test.h"

#include <QFile>

#include <csignal>
#include <sys/wait.h>

namespace orvanta {
namespace {

class LettingGoTest : public LaunchingTest {
protected:
    ChildRecord m_record;
};

TEST_F(LettingGoTest, AChildOutlivesItsLauncherUndisturbed) {
    const std::set<int> before = openDescriptors();
    const QString path = filePath(QStringLiteral("signals"));
    auto child = launchProbe(m_record, {QStringLiteral("record-signals"), path});
    ASSERT_TRUE(runLoopUntil([&] { return m_record.contains("\n"); }));

    QElapsedTimer clock;
    clock.start();
    child.reset();
    m_launcher.reset();
    EXPECT_LT(clock.elapsed(), 500);
    EXPECT_EQ(openDescriptors(), before);

    runLoopFor(std::chrono::milliseconds(500));
    siginfo_t info{};
    ASSERT_EQ(
        ::waitid(P_PID, static_cast<id_t>(m_record.pid()), &info, WEXITED | WNOHANG | WNOWAIT), 0);
    EXPECT_EQ(info.si_pid, 0) << "the child has exited";

    ::kill(m_record.pid(), SIGUSR1);
    ASSERT_TRUE(waitWithoutLoop([&] { return QFile::exists(path); }));
    QFile signals(path);
    ASSERT_TRUE(signals.open(QFile::ReadOnly));
    EXPECT_EQ(signals.readAll().toStdString(), "caught:");
    EXPECT_EQ(::waitpid(m_record.pid(), nullptr, 0), m_record.pid());
    runLoopFor(std::chrono::milliseconds(100));
    EXPECT_TRUE(m_record.exits.empty());
}

TEST_F(LettingGoTest, AHandleMayOutliveTheLauncher) {
    const std::set<int> before = openDescriptors();
    const auto child = launchProbe(m_record, {QStringLiteral("close-output")});
    ASSERT_TRUE(runLoopUntil([&] { return m_record.contains("\n"); }));
    m_launcher.reset();
    EXPECT_EQ(openDescriptors(), before);
    EXPECT_TRUE(child->isRunning());
    child->terminate();
    int status = 0;
    ASSERT_EQ(::waitpid(m_record.pid(), &status, 0), m_record.pid());
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGTERM);
}

TEST_F(LettingGoTest, TheExitOfASlowChildIsReportedWithoutItsHandle) {
    auto child = launchProbe(m_record, {QStringLiteral("linger"), QStringLiteral("2000")});
    ASSERT_TRUE(runLoopUntil([&] { return m_record.contains("\n"); }));
    QElapsedTimer clock;
    clock.start();
    child->terminate();
    child.reset();
    ASSERT_TRUE(runLoopUntil([&] { return m_record.hasExited() && m_record.contains("terms"); }));
    EXPECT_GE(clock.elapsed(), 1900);
    EXPECT_EQ(m_record.exits, std::vector<int>{5});
}

TEST_F(LettingGoTest, TheCallbacksAreFreedWithTheFinishedChild) {
    const auto token = std::make_shared<int>(0);
    auto options = optionsFor(m_record, QStringLiteral("/bin/sh"),
                              {QStringLiteral("-c"), QStringLiteral("echo bye")});
    options.onOutput = [token](const QByteArray&) {};
    options.onExit = [token](int) {};
    m_launcher->launch(std::move(options));
    EXPECT_GT(token.use_count(), 1);
    EXPECT_TRUE(runLoopUntil([&] { return token.use_count() == 1; }));
}

} // namespace
} // namespace orvanta
