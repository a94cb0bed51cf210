// SPDX-License-Identifier: MIT
#include "platform/qt/main_queue.h"

#include "integration/run_loop.h"

#include <gtest/gtest.h>

#include <optional>

namespace orvanta {
namespace {

struct Fate {
    bool isAwake = false;
    bool isAbandoned = false;
};

Task<> sleepAndTell(QtMainQueue& queue, Fate& fate) {
    try {
        co_await queue.sleep(Seconds(1000));
        fate.isAwake = true;
    } catch (const TaskAbandoned&) {
        fate.isAbandoned = true;
        throw;
    }
}

class QtMainQueueEnd : public ::testing::Test {
protected:
    std::optional<QtMainQueue> m_queue{std::in_place};
    std::shared_ptr<int> m_marker = std::make_shared<int>(0);
};

TEST_F(QtMainQueueEnd, EndsSleepsThatNothingWouldWakeAnyMore) {
    Fate fates[3];
    for (Fate& fate : fates) {
        sleepAndTell(*m_queue, fate);
    }
    EXPECT_FALSE(fates[0].isAbandoned);
    m_queue.reset();
    for (const Fate& fate : fates) {
        EXPECT_TRUE(fate.isAbandoned);
        EXPECT_FALSE(fate.isAwake);
    }
}

TEST_F(QtMainQueueEnd, DropsJobsAndTimersUncalled) {
    const auto job = [marker = m_marker] { ++*marker; };
    m_queue->post(job);
    m_queue->after(Seconds(0.001), job);
    auto timer = m_queue->repeat(Seconds(0.001), job);
    EXPECT_GT(m_marker.use_count(), 4);
    m_queue.reset();
    // The local copy and the one in `job`.
    EXPECT_EQ(m_marker.use_count(), 2);
    turnLoopFor(std::chrono::milliseconds(50));
    EXPECT_EQ(*m_marker, 0);
    timer.reset();
}

TEST_F(QtMainQueueEnd, ATimerMayBeHeldByAJobThatIsDropped) {
    const auto timer = std::make_shared<std::unique_ptr<RepeatingTimer>>(
        m_queue->repeat(Seconds(1000), [marker = m_marker] {}));
    m_queue->after(Seconds(1000), [timer] {});
    const auto inItself = std::make_shared<std::unique_ptr<RepeatingTimer>>();
    *inItself = m_queue->repeat(Seconds(1000), [inItself, marker = m_marker] {});
    m_queue.reset();
    EXPECT_EQ(m_marker.use_count(), 1);
}

/// What is being dropped may, in its last moments, use the queue.
class UsesTheQueue {
public:
    UsesTheQueue(QtMainQueue& queue, std::shared_ptr<int> marker)
        : m_queue(queue), m_marker(std::move(marker)) {}
    ~UsesTheQueue() {
        m_queue.post([marker = m_marker] { ++*marker; });
        m_queue.after(Seconds(0), [marker = m_marker] { ++*marker; });
    }

private:
    QtMainQueue& m_queue;
    std::shared_ptr<int> m_marker;
};

TEST_F(QtMainQueueEnd, ToleratesUseByWhatItDrops) {
    m_queue->after(Seconds(1000), [user = std::make_shared<UsesTheQueue>(*m_queue, m_marker)] {});
    m_queue->post([user = std::make_shared<UsesTheQueue>(*m_queue, m_marker)] {});
    m_queue.reset();
    EXPECT_EQ(m_marker.use_count(), 1);
    turnLoopFor(std::chrono::milliseconds(20));
    EXPECT_EQ(*m_marker, 0);
}

} // namespace
} // namespace orvanta
