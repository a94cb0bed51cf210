// SPDX-License-Identifier: MIT
#pragma once

#include "base/completion.h"
#include "platform/main_queue.h"

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <utility>

namespace orvanta::fakes {

/// A main loop on virtual time: nothing happens but inside `runUntilIdle` and `advance`. Jobs run
/// in order of posting, timers in order of due time, then of making.
class FakeMainQueue : public MainQueue {
public:
    FakeMainQueue();
    ~FakeMainQueue() override;

    void post(std::function<void()> job) override;
    void after(Seconds delay, std::function<void()> job) override;
    std::unique_ptr<RepeatingTimer> repeat(Seconds interval, std::function<void()> tick) override;
    Task<> sleep(Seconds duration) override;

    /// Runs everything that is due now.
    void runUntilIdle();
    /// Moves time on, running everything that comes due, each at its own time.
    void advance(Seconds duration);
    /// Virtual time since the beginning.
    Seconds now() const { return m_state->now; }
    /// Drops all jobs, timers and waits; the coroutines that waited are unwound.
    void shutDown();

    std::size_t repeatingTimerCount() const;
    /// The intervals of the repeating timers that run, in order of making.
    std::vector<Seconds> repeatingIntervals() const;

private:
    struct Entry {
        std::function<void()> job;
        std::optional<Seconds> interval;
    };
    using Key = std::pair<Seconds, std::uint64_t>;
    struct State {
        Seconds now{0};
        std::uint64_t nextId = 0;
        std::deque<std::function<void()>> jobs;
        std::map<Key, Entry> timers;
    };
    class Timer;

    Key schedule(Seconds due, Entry entry);
    Completion<Done>::Waiter wakeAfter(Seconds duration);
    void runNextTimer();

    std::shared_ptr<State> m_state;
};

} // namespace orvanta::fakes
