// SPDX-License-Identifier: MIT
#pragma once

#include "base/completion.h"
#include "platform/background_work.h"
#include "simulation/world/conditions.h"
#include "simulation/world/world_queue.h"

#include <deque>
#include <exception>
#include <optional>

namespace orvanta::simulation {

/// The worker thread. A job takes time with each file it changes; whatever comes due meanwhile on
/// the main thread runs in between, as if the two ran side by side.
class WorldWork : public BackgroundWork {
public:
    WorldWork(WorldQueue& queue, const Conditions& conditions)
        : m_queue(queue), m_conditions(conditions) {}

    Task<> run(std::function<void()> job) override;

    /// To be called before each change of a file. Throws out of the job when the process has died.
    void holdUp();
    bool isRunningJob() const { return m_isRunning && m_depth == 0; }
    /// True while the main thread goes on in the middle of a job.
    bool isHeldUp() const { return m_depth > 0; }
    /// The process ends: a job that runs stops where it is, the others never begin.
    void dropTray();

private:
    struct Job {
        std::function<void()> body;
        Completion<std::exception_ptr> completion;
    };
    struct ProcessDied {};

    void startNext();
    void perform();
    void finish(int process, const std::exception_ptr& error);

    WorldQueue& m_queue;
    const Conditions& m_conditions;
    std::deque<Job> m_jobs;
    std::optional<Completion<std::exception_ptr>> m_running;
    bool m_isRunning = false;
    bool m_isScheduled = false;
    int m_depth = 0;
    /// Counts the processes, so that a job of a dead one is told apart.
    int m_process = 0;
};

} // namespace orvanta::simulation
