// SPDX-License-Identifier: MIT
#include "tests/integration/child_process/launching_test.h"

#include <gmock/gmock.h>

#include <csignal>
#include <sys/wait.h>

namespace orvanta {
namespace {

using ::testing::ElementsAre;

class ChildExitTest : public LaunchingTest {
protected:
    std::vector<int> exitsOf(const QString& script) {
        ChildRecord record;
        launchShell(record, script);
        runLoopUntil([&] { return record.hasExited(); });
        runLoopFor(std::chrono::milliseconds(50)); // for a second report that must not come
        return record.exits;
    }
};

TEST_F(ChildExitTest, ReportsTheStatusOrTheSignalOnce) {
    EXPECT_THAT(exitsOf(QStringLiteral("exit 0")), ElementsAre(0));
    EXPECT_THAT(exitsOf(QStringLiteral("exit 3")), ElementsAre(3));
    EXPECT_THAT(exitsOf(QStringLiteral("kill -9 $$")), ElementsAre(9));
    EXPECT_FALSE(haveChildren());
}

TEST_F(ChildExitTest, NothingIsReportedInsideLaunch) {
    ChildRecord record;
    const auto child = launchShell(record, QStringLiteral("echo here; exit 3"));
    siginfo_t exited{};
    ASSERT_EQ(::waitid(P_ALL, 0, &exited, WEXITED | WNOWAIT), 0);
    EXPECT_TRUE(record.output.isEmpty());
    EXPECT_TRUE(record.exits.empty());
    EXPECT_TRUE(child->isRunning());

    // Output written before the exit arrives although the child is long gone.
    ASSERT_TRUE(runLoopUntil([&] { return record.hasExited() && record.contains("here"); }));
    EXPECT_THAT(record.exits, ElementsAre(3));
    EXPECT_FALSE(child->isRunning());
}

TEST_F(ChildExitTest, TheChildCountsAsExitedWhenItsExitIsReported) {
    ChildRecord record;
    std::shared_ptr<ChildProcess> child;
    std::optional<bool> runningAtExit;
    auto options = optionsFor(record, QStringLiteral("/bin/sh"),
                              {QStringLiteral("-c"), QStringLiteral("exit 0")});
    options.onExit = [&](int) {
        runningAtExit = child->isRunning();
        child.reset();
    };
    child = m_launcher->launch(std::move(options));
    EXPECT_TRUE(child->isRunning());
    ASSERT_TRUE(runLoopUntil([&] { return runningAtExit.has_value(); }));
    EXPECT_FALSE(*runningAtExit);
    EXPECT_EQ(child, nullptr);
}

TEST_F(ChildExitTest, TerminateSendsOneSigtermAndReturnsAtOnce) {
    ChildRecord record;
    auto child = launchProbe(record, {QStringLiteral("linger"), QStringLiteral("500")});
    ASSERT_TRUE(runLoopUntil([&] { return record.contains("pid "); }));

    QElapsedTimer clock;
    clock.start();
    child->terminate();
    EXPECT_LT(clock.elapsed(), 200);
    child.reset();

    ASSERT_TRUE(runLoopUntil([&] { return record.hasExited() && record.contains("terms"); }));
    EXPECT_TRUE(record.hasLine("terms 1"));
    EXPECT_THAT(record.exits, ElementsAre(5));
}

TEST_F(ChildExitTest, TerminateEndsAChildThatDoesNotCatchIt) {
    ChildRecord record;
    const auto child = launchProbe(record, {QStringLiteral("close-output")});
    ASSERT_TRUE(runLoopUntil([&] { return record.contains("pid "); }));
    child->terminate();
    ASSERT_TRUE(runLoopUntil([&] { return record.hasExited(); }));
    EXPECT_THAT(record.exits, ElementsAre(SIGTERM));
}

TEST_F(ChildExitTest, ManyLaunchesLeaveNothingBehind) {
    const std::set<int> before = openDescriptors();
    for (int i = 0; i < 200; ++i) {
        ChildRecord record;
        launchShell(record, QStringLiteral("echo out; echo err >&2; exit 3"));
        ASSERT_TRUE(runLoopUntil([&] { return record.hasExited() && record.output.size() == 8; }));
    }
    ASSERT_TRUE(runLoopUntil([&] { return openDescriptors() == before; }));
    EXPECT_FALSE(haveChildren());
}

TEST_F(ChildExitTest, AnIgnoredSigchldDoesNotCostTheStatus) {
    ::signal(SIGCHLD, SIG_IGN);
    m_launcher.emplace(watchExit);
    EXPECT_THAT(exitsOf(QStringLiteral("exit 3")), ElementsAre(3));
    ::signal(SIGCHLD, SIG_DFL);
}

TEST_F(ChildExitTest, AChildReapedBySomebodyElseIsReportedWithoutAStatus) {
    ChildRecord record;
    launchProbe(record, {QStringLiteral("close-output")});
    ASSERT_TRUE(runLoopUntil([&] { return record.contains("\n"); }));
    ::kill(record.pid(), SIGKILL);
    ASSERT_EQ(::waitpid(record.pid(), nullptr, 0), record.pid());
    ASSERT_TRUE(runLoopUntil([&] { return record.hasExited(); }));
    EXPECT_THAT(record.exits, ElementsAre(-1));
}

} // namespace
} // namespace orvanta
