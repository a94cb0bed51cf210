// SPDX-License-Identifier: MIT
#pragma once

#include "base/completion.h"
#include "platform/main_queue.h"
#include "platform/qt/job_receiver.h"
#include "platform/qt/timer_table.h"

#include <memory>

namespace orvanta {

/// The event loop of the thread that made this object, which is the main thread. Its destruction
/// drops all jobs and timers and ends all sleeps with `TaskAbandoned`. Nobody may post any more
/// by then.
class QtMainQueue : public MainQueue {
public:
    QtMainQueue() = default;
    QtMainQueue(const QtMainQueue&) = delete;
    QtMainQueue& operator=(const QtMainQueue&) = delete;
    ~QtMainQueue() override;

    void post(std::function<void()> job) override;
    void after(Seconds delay, std::function<void()> job) override;
    std::unique_ptr<RepeatingTimer> repeat(Seconds interval, std::function<void()> tick) override;
    Task<> sleep(Seconds duration) override;

private:
    Completion<Done>::Waiter wakeAfter(Seconds duration);

    JobReceiver m_jobs;
    std::shared_ptr<TimerTable> m_timers = std::make_shared<TimerTable>();
};

} // namespace orvanta
