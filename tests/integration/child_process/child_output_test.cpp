// SPDX-License-Identifier: MIT
#include "tests/integration/child_process/launching_test.h"

#include <QAbstractEventDispatcher>

#include <csignal>
#include <ctime>

namespace orvanta {
namespace {

class ChildOutputTest : public LaunchingTest {
protected:
    /// The output of the probe writing `total` bytes, `piece` at a time.
    QByteArray written(const QString& piece, qsizetype total) {
        launchProbe(m_record, {QStringLiteral("write"), piece, QString::number(total)});
        EXPECT_TRUE(
            runLoopUntil([&] { return m_record.hasExited() && m_record.output.size() >= total; },
                         std::chrono::seconds(50)));
        EXPECT_EQ(m_record.exits, std::vector<int>{0});
        return m_record.output;
    }

    ChildRecord m_record;
};

QByteArray pattern(qsizetype size) {
    const QByteArray period("abcdefghijklmnopqrstuvw");
    return period.repeated(size / period.size() + 1).left(size);
}

TEST_F(ChildOutputTest, SingleBytesArriveCompleteAndInOrder) {
    const qsizetype total = 100'000;
    EXPECT_TRUE(written(QStringLiteral("1"), total) == pattern(total));
}

TEST_F(ChildOutputTest, LargeWritesArriveCompleteInOrderAndInPieces) {
    const qsizetype total = 64 * 1024 * 1024;
    EXPECT_TRUE(written(QStringLiteral("1048576"), total) == pattern(total));
    EXPECT_LE(m_record.largestPiece, 64 * 1024);
}

TEST_F(ChildOutputTest, BothStreamsAreRead) {
    launchShell(m_record, QStringLiteral("echo to output; echo to error >&2"));
    EXPECT_TRUE(runLoopUntil(
        [&] { return m_record.hasLine("to output") && m_record.hasLine("to error"); }));
    EXPECT_TRUE(runLoopUntil([&] { return m_record.hasExited(); }));
}

TEST_F(ChildOutputTest, OutputThatNobodyWantsIsDrained) {
    auto options =
        optionsFor(m_record, QStringLiteral(CHILD_PROBE),
                   {QStringLiteral("write"), QStringLiteral("1048576"), QStringLiteral("4194304")});
    options.onOutput = nullptr;
    m_launcher->launch(std::move(options));
    ASSERT_TRUE(runLoopUntil([&] { return m_record.hasExited(); }));
    EXPECT_EQ(m_record.exits, std::vector<int>{0});
}

TEST_F(ChildOutputTest, AChildThatClosesItsStreamsLivesOnQuietly) {
    const std::set<int> before = openDescriptors();
    const auto child = launchProbe(m_record, {QStringLiteral("close-output")});
    ASSERT_TRUE(runLoopUntil([&] { return m_record.contains("\n"); }));
    // Both pipes are given back; one descriptor still watches for the exit.
    ASSERT_TRUE(runLoopUntil([&] { return openDescriptors().size() == before.size() + 1; }));

    int turns = 0;
    QObject counter;
    QObject::connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::awake,
                     &counter, [&turns] { ++turns; });
    const std::clock_t processorTime = std::clock();
    runLoopFor(std::chrono::milliseconds(500));
    EXPECT_LT(turns, 50);
    EXPECT_LT(static_cast<double>(std::clock() - processorTime) / CLOCKS_PER_SEC, 0.2);
    EXPECT_FALSE(m_record.hasExited());
    EXPECT_TRUE(child->isRunning());

    ::kill(m_record.pid(), SIGKILL);
    ASSERT_TRUE(runLoopUntil([&] { return m_record.hasExited(); }));
    EXPECT_EQ(openDescriptors(), before);
}

TEST_F(ChildOutputTest, AGrandchildIsReadAfterTheChildHasExited) {
    const std::set<int> before = openDescriptors();
    QElapsedTimer clock;
    clock.start();
    launchShell(m_record, QStringLiteral("(sleep 2; echo later; sleep 1) & echo now; exit 3"));
    ASSERT_TRUE(runLoopUntil([&] { return m_record.hasExited() && m_record.hasLine("now"); }));
    EXPECT_LT(clock.elapsed(), 1500);
    EXPECT_EQ(m_record.exits, std::vector<int>{3});
    EXPECT_FALSE(m_record.contains("later"));

    ASSERT_TRUE(runLoopUntil([&] { return m_record.contains("later"); }));
    EXPECT_NE(openDescriptors(), before);
    ASSERT_TRUE(runLoopUntil([&] { return openDescriptors() == before; }));
    EXPECT_EQ(m_record.exits, std::vector<int>{3});
}

} // namespace
} // namespace orvanta
