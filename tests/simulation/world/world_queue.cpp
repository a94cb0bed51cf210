// SPDX-License-Identifier: MIT
#include "simulation/world/world_queue.h"

#include <algorithm>
#include <cmath>

namespace orvanta::simulation {

/// A repeating entry keeps its number, so that its handle finds it whatever its moment.
class WorldQueue::Timer : public RepeatingTimer {
public:
    Timer(std::weak_ptr<State> state, std::uint64_t id) : m_state(std::move(state)), m_id(id) {}
    Timer(const Timer&) = delete;
    Timer& operator=(const Timer&) = delete;
    ~Timer() override {
        if (const auto state = m_state.lock()) {
            std::erase_if(state->entries, [this](const auto& e) { return e.first.second == m_id; });
        }
    }

private:
    std::weak_ptr<State> m_state;
    std::uint64_t m_id;
};

Moment WorldQueue::moments(Seconds duration) {
    constexpr double kLongest = 24.0 * 86'400.0;
    return static_cast<Moment>(std::llround(std::min(duration.count(), kLongest) * 1e6));
}

std::uint64_t WorldQueue::add(Moment at, Entry entry) {
    const std::uint64_t id = m_state->nextId++;
    m_state->entries.emplace(Key{at, id}, std::move(entry));
    return id;
}

void WorldQueue::post(std::function<void()> job) {
    m_state->jobs.push_back(std::move(job));
}

void WorldQueue::after(Seconds delay, std::function<void()> job) {
    const Moment due = m_state->now + moments(delay);
    add(due + lateness(due), {.job = std::move(job)});
}

std::unique_ptr<RepeatingTimer> WorldQueue::repeat(Seconds interval, std::function<void()> tick) {
    const Moment step = std::max(moments(interval), kMillisecond);
    const Moment due = m_state->now + step;
    return std::make_unique<Timer>(
        m_state, add(due + lateness(due), {.job = std::move(tick), .interval = step, .base = due}));
}

Task<> WorldQueue::sleep(Seconds duration) {
    Completion<Done> completion;
    auto waiter = completion.wait();
    after(duration, [completion = std::move(completion)] { completion.decide(Done{}); });
    co_await waiter;
}

void WorldQueue::forTray(Moment at, std::function<void()> job) {
    add(at, {.job = std::move(job)});
}

void WorldQueue::inWorld(Moment at, std::function<void()> job) {
    add(at, {.job = std::move(job), .isOfTray = false});
}

bool WorldQueue::step(Moment until) {
    if (!m_state->jobs.empty()) {
        const auto job = std::move(m_state->jobs.front());
        m_state->jobs.pop_front();
        job();
    } else if (!m_state->entries.empty() && m_state->entries.begin()->first.first <= until) {
        runFirstEntry();
    } else {
        m_state->now = std::max(m_state->now, until);
        return false;
    }
    afterStep();
    return true;
}

void WorldQueue::runFirstEntry() {
    auto node = m_state->entries.extract(m_state->entries.begin());
    m_state->now = std::max(m_state->now, node.key().first);
    if (node.mapped().interval == 0) {
        node.mapped().job();
        return;
    }
    const auto tick = node.mapped().job;
    Entry& entry = node.mapped();
    // A timer that was held up ticks once and goes on from there.
    entry.base += entry.interval;
    if (entry.base <= m_state->now) {
        entry.base = m_state->now + entry.interval;
    }
    node.key().first = entry.base + lateness(entry.base);
    m_state->entries.insert(std::move(node));
    tick();
}

void WorldQueue::runUntil(Moment until) {
    while (step(until)) {
    }
}

void WorldQueue::clear() {
    dropTray();
    m_state->entries.clear();
}

void WorldQueue::dropTray() {
    const auto isOfTray = [](const auto& entry) { return entry.second.isOfTray; };
    while (!m_state->jobs.empty() ||
           std::any_of(m_state->entries.begin(), m_state->entries.end(), isOfTray)) {
        const auto jobs = std::exchange(m_state->jobs, {});
        std::map<Key, Entry> dropped;
        for (auto it = m_state->entries.begin(); it != m_state->entries.end();) {
            const auto current = it++;
            if (isOfTray(*current)) {
                dropped.insert(m_state->entries.extract(current));
            }
        }
    }
}

} // namespace orvanta::simulation
