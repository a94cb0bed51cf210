// SPDX-License-Identifier: MIT
#include "fakes/fake_main_queue.h"

#include <algorithm>
#include <cmath>

namespace orvanta::fakes {

/// Repeating entries keep their id, so that a handle finds its own whatever its due time.
class FakeMainQueue::Timer : public RepeatingTimer {
public:
    Timer(std::weak_ptr<State> state, std::uint64_t id) : m_state(std::move(state)), m_id(id) {}
    ~Timer() override {
        if (const auto state = m_state.lock()) {
            std::erase_if(state->timers,
                          [this](const auto& timer) { return timer.first.second == m_id; });
        }
    }

private:
    std::weak_ptr<State> m_state;
    std::uint64_t m_id;
};

FakeMainQueue::FakeMainQueue() : m_state(std::make_shared<State>()) {}
FakeMainQueue::~FakeMainQueue() {
    shutDown();
}

void FakeMainQueue::post(std::function<void()> job) {
    m_state->jobs.push_back(std::move(job));
}

FakeMainQueue::Key FakeMainQueue::schedule(Seconds due, Entry entry) {
    const Key key{due, m_state->nextId++};
    m_state->timers.emplace(key, std::move(entry));
    return key;
}

void FakeMainQueue::after(Seconds delay, std::function<void()> job) {
    schedule(m_state->now + delay, {std::move(job), std::nullopt});
}

std::unique_ptr<RepeatingTimer> FakeMainQueue::repeat(Seconds interval,
                                                      std::function<void()> tick) {
    const Key key = schedule(m_state->now + interval, {std::move(tick), interval});
    return std::make_unique<Timer>(m_state, key.second);
}

Completion<Done>::Waiter FakeMainQueue::wakeAfter(Seconds duration) {
    Completion<Done> completion;
    auto waiter = completion.wait();
    after(duration, [completion = std::move(completion)] { completion.decide(Done{}); });
    return waiter;
}

Task<> FakeMainQueue::sleep(Seconds duration) {
    auto waiter = wakeAfter(duration);
    co_await waiter;
}

void FakeMainQueue::runUntilIdle() {
    while (!m_state->jobs.empty()) {
        const auto job = std::move(m_state->jobs.front());
        m_state->jobs.pop_front();
        job();
    }
}

void FakeMainQueue::runNextTimer() {
    auto node = m_state->timers.extract(m_state->timers.begin());
    m_state->now = std::max(m_state->now, node.key().first);
    const auto job = node.mapped().job;
    if (const auto interval = node.mapped().interval) {
        node.key().first += *interval;
        m_state->timers.insert(std::move(node));
    }
    job();
}

void FakeMainQueue::advance(Seconds duration) {
    const Seconds end = m_state->now + duration;
    constexpr Seconds kRounding{1e-9};
    runUntilIdle();
    while (!m_state->timers.empty() && m_state->timers.begin()->first.first <= end + kRounding) {
        runNextTimer();
        runUntilIdle();
    }
    m_state->now = end;
}

void FakeMainQueue::shutDown() {
    while (!m_state->jobs.empty() || !m_state->timers.empty()) {
        const auto jobs = std::exchange(m_state->jobs, {});
        const auto timers = std::exchange(m_state->timers, {});
    }
}

std::size_t FakeMainQueue::repeatingTimerCount() const {
    return repeatingIntervals().size();
}

std::vector<Seconds> FakeMainQueue::repeatingIntervals() const {
    std::map<std::uint64_t, Seconds> byId;
    for (const auto& [key, entry] : m_state->timers) {
        if (entry.interval) {
            byId.emplace(key.second, *entry.interval);
        }
    }
    std::vector<Seconds> intervals;
    for (const auto& [id, interval] : byId) {
        intervals.push_back(interval);
    }
    return intervals;
}

} // namespace orvanta::fakes
