// SPDX-License-Identifier: MIT
#include "simulation/world/world_work.h"

#include <utility>

namespace orvanta::simulation {

Task<> WorldWork::run(std::function<void()> body) {
    Completion<std::exception_ptr> completion;
    auto waiter = completion.wait();
    m_jobs.push_back({std::move(body), std::move(completion)});
    startNext();
    if (const std::exception_ptr error = co_await waiter) {
        std::rethrow_exception(error);
    }
}

void WorldWork::startNext() {
    if (!m_isScheduled && !m_isRunning && !m_jobs.empty()) {
        m_isScheduled = true;
        m_queue.forTray(m_queue.now() + kMillisecond, [this] { perform(); });
    }
}

void WorldWork::perform() {
    m_isScheduled = false;
    const auto body = std::move(m_jobs.front().body);
    m_running = std::move(m_jobs.front().completion);
    m_jobs.pop_front();
    const int process = m_process;
    std::exception_ptr error;
    m_isRunning = true;
    try {
        body();
    } catch (const ProcessDied&) {
        m_isRunning = false;
        return;
    } catch (...) {
        error = std::current_exception();
    }
    m_isRunning = false;
    finish(process, error);
}

void WorldWork::finish(int process, const std::exception_ptr& error) {
    if (process != m_process) {
        return;
    }
    m_queue.post([completion = *m_running, error] { completion.decide(error); });
    m_running.reset();
    startNext();
}

void WorldWork::holdUp() {
    if (!isRunningJob()) {
        return;
    }
    const int process = m_process;
    ++m_depth;
    m_queue.runUntil(m_queue.now() + m_conditions[Condition::fileTime]);
    --m_depth;
    if (process != m_process) {
        throw ProcessDied{};
    }
}

void WorldWork::dropTray() {
    ++m_process;
    m_isScheduled = false;
    m_running.reset();
    while (!m_jobs.empty()) {
        const auto dropped = std::exchange(m_jobs, {});
    }
}

} // namespace orvanta::simulation
