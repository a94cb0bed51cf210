// SPDX-License-Identifier: MIT
#include "platform/qt/main_queue.h"

#include "integration/run_loop.h"
#include "platform/qt/wall_clock.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <limits>
#include <thread>
#include <vector>

namespace orvanta {
namespace {

using std::chrono::milliseconds;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// Seconds since construction.
class Stopwatch {
public:
    Stopwatch() { m_timer.start(); }
    double seconds() const { return static_cast<double>(m_timer.nsecsElapsed()) / 1e9; }

private:
    QElapsedTimer m_timer;
};

Task<> sleepThenSet(QtMainQueue& queue, Seconds duration, bool& isAwake) {
    co_await queue.sleep(duration);
    isAwake = true;
}

TEST(QtMainQueue, RunsJobsLaterInTheOrderOfPosting) {
    QtMainQueue queue;
    std::vector<int> order;
    for (int i = 0; i < 3; ++i) {
        queue.post([&order, i] { order.push_back(i); });
    }
    EXPECT_THAT(order, IsEmpty());
    ASSERT_TRUE(turnLoopUntil([&] { return order.size() == 3; }));
    EXPECT_THAT(order, ElementsAre(0, 1, 2));
}

TEST(QtMainQueue, AJobPostedByAJobRunsOnALaterTurn) {
    QtMainQueue queue;
    int depth = 0;
    std::vector<int> depths;
    queue.post([&] {
        ++depth;
        queue.post([&] { depths.push_back(depth); });
        depths.push_back(depth);
        --depth;
    });
    QEventLoop().processEvents();
    EXPECT_THAT(depths, ElementsAre(1));
    ASSERT_TRUE(turnLoopUntil([&] { return depths.size() == 2; }));
    EXPECT_THAT(depths, ElementsAre(1, 0));
}

TEST(QtMainQueue, KeepsTheOrderOfEachPostingThread) {
    constexpr int kThreads = 4;
    constexpr int kJobs = 2000;
    QtMainQueue queue;
    std::vector<std::vector<int>> orders(kThreads);
    int strangers = 0;
    int count = 0;
    const auto mainThread = std::this_thread::get_id();
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([&, thread] {
            for (int job = 0; job < kJobs; ++job) {
                queue.post([&, thread, job] {
                    strangers += std::this_thread::get_id() != mainThread;
                    orders[static_cast<std::size_t>(thread)].push_back(job);
                    ++count;
                });
            }
        });
    }
    EXPECT_TRUE(turnLoopUntil([&] { return count == kThreads * kJobs; }));
    for (auto& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(strangers, 0);
    for (const auto& order : orders) {
        EXPECT_EQ(order.size(), static_cast<std::size_t>(kJobs));
        EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
    }
}

/// Counts the copies of itself that end on another thread than `home`.
class Homebody {
public:
    Homebody(std::thread::id home, std::atomic<int>& strayed) : m_home(home), m_strayed(strayed) {}
    ~Homebody() { m_strayed += std::this_thread::get_id() != m_home; }

private:
    std::thread::id m_home;
    std::atomic<int>& m_strayed;
};

TEST(QtMainQueue, DestroysJobsWhereItRunsThem) {
    constexpr int kJobs = 20000;
    QtMainQueue queue;
    std::atomic<int> strayed = 0;
    int count = 0;
    std::thread poster([&, home = std::this_thread::get_id()] {
        for (int i = 0; i < kJobs; ++i) {
            auto homebody = std::make_unique<Homebody>(home, strayed);
            std::function<void()> job = [&count, shared = std::shared_ptr(std::move(homebody))] {
                ++count;
            };
            queue.post(std::move(job));
        }
    });
    EXPECT_TRUE(turnLoopUntil([&] { return count == kJobs; }));
    poster.join();
    EXPECT_EQ(strayed, 0);
}

TEST(QtMainQueue, WakesASleepingLoopFromAnotherThread) {
    QtMainQueue queue;
    QEventLoop loop;
    std::thread poster([&] {
        std::this_thread::sleep_for(milliseconds(50));
        queue.post([&] { loop.quit(); });
    });
    QTimer watchdog;
    watchdog.start(kPatience);
    bool isTooLate = false;
    QObject::connect(&watchdog, &QTimer::timeout, &watchdog, [&] {
        isTooLate = true;
        loop.quit();
    });
    loop.exec();
    poster.join();
    EXPECT_FALSE(isTooLate);
}

TEST(QtMainQueue, RunsDelayedJobsOnceAndNeverEarly) {
    QtMainQueue queue;
    const Stopwatch watch;
    std::vector<double> times;
    for (const double delay : {0.3, 0.05, 0.151}) {
        queue.after(Seconds(delay), [&times, &watch, delay] {
            times.push_back(delay);
            EXPECT_GE(watch.seconds(), delay);
        });
    }
    ASSERT_TRUE(turnLoopUntil([&] { return times.size() == 3; }));
    EXPECT_THAT(times, ElementsAre(0.05, 0.151, 0.3));
    turnLoopFor(milliseconds(400));
    EXPECT_EQ(times.size(), 3U);
}

TEST(QtMainQueue, ASecondIsASecond) {
    QtMainQueue queue;
    double best = std::numeric_limits<double>::max();
    // Of several, because the machine may be busy.
    for (int i = 0; i < 4 && best > 1.02; ++i) {
        const Stopwatch watch;
        bool isAwake = false;
        sleepThenSet(queue, Seconds(1), isAwake);
        EXPECT_FALSE(isAwake);
        ASSERT_TRUE(turnLoopUntil([&] { return isAwake; }));
        EXPECT_GE(watch.seconds(), 1.0);
        best = std::min(best, watch.seconds());
    }
    EXPECT_LT(best, 1.02);
}

TEST(QtMainQueue, ClampsDelaysThatNoTimerCanHave) {
    QtMainQueue queue;
    int early = 0;
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double infinity = std::numeric_limits<double>::infinity();
    for (const double delay : {0.0, -1.0, -infinity, nan, 1e-9}) {
        queue.after(Seconds(delay), [&early] { ++early; });
    }
    EXPECT_EQ(early, 0);
    ASSERT_TRUE(turnLoopUntil([&] { return early == 5; }));
    int late = 0;
    static int complaints = 0;
    const auto handler =
        qInstallMessageHandler([](auto, const auto&, const QString&) { ++complaints; });
    for (const double delay : {infinity, 1e300, 2147483.647, 2147483.648, 4294967.297}) {
        queue.after(Seconds(delay), [&late] { ++late; });
    }
    qInstallMessageHandler(handler);
    EXPECT_EQ(complaints, 0) << "the timers have not been started";
    turnLoopFor(milliseconds(100));
    EXPECT_EQ(late, 0);
}

TEST(QtMainQueue, ARepeatingTimerWithoutIntervalLeavesTheLoopAlive) {
    QtMainQueue queue;
    int ticks = 0;
    int jobs = 0;
    const auto timer = queue.repeat(Seconds(0), [&ticks] { ++ticks; });
    queue.after(Seconds(0.2), [&jobs] { ++jobs; });
    ASSERT_TRUE(turnLoopUntil([&] { return jobs == 1; }));
    EXPECT_GT(ticks, 5);
    EXPECT_LE(ticks, 220);
}

TEST(QtMainQueue, RepeatsTheFirstTimeAfterOneInterval) {
    QtMainQueue queue;
    const Stopwatch watch;
    std::vector<double> ticks;
    const auto timer = queue.repeat(Seconds(0.1), [&] { ticks.push_back(watch.seconds()); });
    ASSERT_TRUE(turnLoopUntil([&] { return ticks.size() >= 4; }));
    EXPECT_GE(ticks[0], 0.1);
    EXPECT_GE(ticks[3], 0.4);
}

TEST(QtMainQueue, ADestroyedRepeatingTimerIsSilent) {
    QtMainQueue queue;
    int ticks = 0;
    auto timer = queue.repeat(Seconds(0.01), [&ticks] { ++ticks; });
    ASSERT_TRUE(turnLoopUntil([&] { return ticks > 0; }));
    timer.reset();
    const int before = ticks;
    turnLoopFor(milliseconds(100));
    EXPECT_EQ(ticks, before);
}

TEST(QtMainQueue, ARepeatingTimerMayBeDestroyedInItsOwnTick) {
    QtMainQueue queue;
    const auto marker = std::make_shared<int>(7);
    int seen = 0;
    int ticks = 0;
    std::unique_ptr<RepeatingTimer> timer = queue.repeat(Seconds(0.01), [&, marker] {
        ++ticks;
        timer.reset();
        seen = *marker;
    });
    ASSERT_TRUE(turnLoopUntil([&] { return ticks == 1; }));
    turnLoopFor(milliseconds(100));
    EXPECT_EQ(ticks, 1);
    EXPECT_EQ(seen, 7);
    EXPECT_EQ(marker.use_count(), 1);
}

TEST(QtWallClock, TellsTheTimeInUtc) {
    const auto before = QDateTime::currentDateTimeUtc();
    const auto now = QtWallClock().now();
    EXPECT_EQ(now.timeSpec(), Qt::UTC);
    EXPECT_GE(now, before);
    EXPECT_LE(now, QDateTime::currentDateTimeUtc());
}

} // namespace
} // namespace orvanta
