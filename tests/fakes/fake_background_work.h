// SPDX-License-Identifier: MIT
#pragma once

#include "base/completion.h"
#include "platform/background_work.h"
#include "platform/main_queue.h"

#include <deque>
#include <exception>

namespace orvanta::fakes {

/// A worker without a thread: a job runs on a later turn of the main queue, its caller resumes on
/// one after that.
class FakeBackgroundWork : public BackgroundWork {
public:
    explicit FakeBackgroundWork(MainQueue& queue) : m_queue(queue) {}

    Task<> run(std::function<void()> job) override;

    /// True while a job runs.
    bool isRunningJob() const { return m_runningJob; }
    /// Runs the oldest of the jobs held.
    void releaseOne();
    /// Drops all jobs held; whoever waits for one is unwound.
    void shutDown();

    /// While true, jobs are not run but held.
    bool holdsJobs = false;
    std::size_t heldCount() const { return m_held.size(); }
    int jobCount = 0;

private:
    struct Job {
        std::function<void()> body;
        Completion<std::exception_ptr> completion; ///< with what the body threw
    };
    void perform(const Job& job);

    MainQueue& m_queue;
    std::deque<Job> m_held;
    bool m_runningJob = false;
};

} // namespace orvanta::fakes
