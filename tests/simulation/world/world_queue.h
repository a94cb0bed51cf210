// SPDX-License-Identifier: MIT
#pragma once

#include "base/completion.h"
#include "platform/main_queue.h"
#include "simulation/world/moment.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <utility>

namespace orvanta::simulation {

/// The main loop and the course of time. What the tray waits for and what happens in the world
/// stand in one order, by moment and then by making; one step runs one of them.
class WorldQueue : public MainQueue {
public:
    WorldQueue() : m_state(std::make_shared<State>()) {}
    ~WorldQueue() override { dropTray(); }

    void post(std::function<void()> job) override;
    void after(Seconds delay, std::function<void()> job) override;
    std::unique_ptr<RepeatingTimer> repeat(Seconds interval, std::function<void()> tick) override;
    Task<> sleep(Seconds duration) override;

    /// Something that the tray waits for: gone when it ends.
    void forTray(Moment at, std::function<void()> job);
    /// Something that happens whether the tray runs or not.
    void inWorld(Moment at, std::function<void()> job);

    Moment now() const { return m_state->now; }
    /// Runs the next job or what is due next, up to `until`; false when there is nothing.
    bool step(Moment until);
    /// Everything up to `until`, each at its moment.
    void runUntil(Moment until);
    /// The computer sleeps: time passes, and what came due meanwhile is late.
    void skip(Moment duration) { m_state->now += duration; }
    /// The process ends: jobs, timers and waits of the tray are gone, who waited is unwound.
    void dropTray();

    /// Nothing happens any more.
    void clear();

    /// How late a timer that is due at the given moment fires.
    std::function<Moment(Moment)> lateness = [](Moment) { return Moment(0); };
    /// Called after every step.
    std::function<void()> afterStep = [] {};

private:
    struct Entry {
        std::function<void()> job;
        Moment interval = 0; ///< 0: once
        bool isOfTray = true;
        Moment base = 0; ///< a repeating timer's moment without lateness
    };
    using Key = std::pair<Moment, std::uint64_t>;
    struct State {
        Moment now = 0;
        std::uint64_t nextId = 0;
        std::deque<std::function<void()>> jobs;
        std::map<Key, Entry> entries;
    };
    class Timer;

    static Moment moments(Seconds duration);
    std::uint64_t add(Moment at, Entry entry);
    void runFirstEntry();

    std::shared_ptr<State> m_state;
};

} // namespace orvanta::simulation
