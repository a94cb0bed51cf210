// SPDX-License-Identifier: MIT
#include "tests/integration/child_process/launching_test.h"

#include <QTimer>

#include <sys/resource.h>

namespace orvanta {
namespace {

/// The largest resident size of this process so far.
long peakKibibytes() {
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
#ifdef __APPLE__
    return usage.ru_maxrss / 1024;
#else
    return usage.ru_maxrss;
#endif
}

/// Measures how long a 10 ms timer was kept waiting at worst.
class PauseMeter {
public:
    PauseMeter() {
        m_clock.start();
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { tick(); });
        m_timer.start(std::chrono::milliseconds(10));
    }

    int ticks() const { return m_ticks; }
    qint64 longestPause() const { return std::max(m_longest, m_clock.elapsed()); }

private:
    void tick() {
        ++m_ticks;
        m_longest = std::max(m_longest, m_clock.restart());
    }

    QTimer m_timer;
    QElapsedTimer m_clock;
    qint64 m_longest = 0;
    int m_ticks = 0;
};

class ChildFloodTest : public LaunchingTest {};

TEST_F(ChildFloodTest, AGibibyteWithoutALineEndNeitherFillsTheMemoryNorStopsTheLoop) {
    const qint64 total = 1024 * 1024 * 1024;
    ChildRecord record;
    qint64 received = 0;
    auto options =
        optionsFor(record, QStringLiteral(CHILD_PROBE),
                   {QStringLiteral("write"), QStringLiteral("1048576"), QString::number(total)});
    options.onOutput = [&received](const QByteArray& piece) { received += piece.size(); };
    const long peakBefore = peakKibibytes();
    PauseMeter meter;
    QElapsedTimer clock;
    clock.start();
    m_launcher->launch(std::move(options));
    ASSERT_TRUE(runLoopUntil([&] { return record.hasExited() && received >= total; },
                             std::chrono::seconds(170)));
    EXPECT_EQ(received, total);
    EXPECT_LT(peakKibibytes() - peakBefore, 16 * 1024);
    EXPECT_LT(meter.longestPause(), 500);
    EXPECT_GT(meter.ticks(), clock.elapsed() / 100);
    RecordProperty("milliseconds", static_cast<int>(clock.elapsed()));
    std::printf("%lld ms, longest pause %lld ms, %d ticks, memory +%ld KiB\n",
                static_cast<long long>(clock.elapsed()),
                static_cast<long long>(meter.longestPause()), meter.ticks(),
                peakKibibytes() - peakBefore);
}

} // namespace
} // namespace orvanta
