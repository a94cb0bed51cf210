// SPDX-License-Identifier: MIT
#pragma once

#include "base/completion.h"
#include "platform/background_work.h"
#include "platform/qt/job_receiver.h"

#include <exception>
#include <memory>
#include <unordered_map>

namespace orvanta {

/// A single worker thread, started at the first job. Results come back through the event loop of
/// the thread that made this object, which is the main thread.
///
/// Destroying it abandons all callers and drops the jobs that have not begun. One that has begun
/// goes on, on its own, for as long as the process lives.
class QtBackgroundWork : public BackgroundWork {
public:
    QtBackgroundWork();
    QtBackgroundWork(const QtBackgroundWork&) = delete;
    QtBackgroundWork& operator=(const QtBackgroundWork&) = delete;
    ~QtBackgroundWork() override;

    Task<> run(std::function<void()> job) override;

private:
    class Worker;
    using Number = quint64;

    /// Nothing, or what the job threw.
    using Outcome = Completion<std::exception_ptr>;

    Outcome::Waiter enqueue(std::function<void()> job);
    Worker& worker();
    void finish(Number number, const std::exception_ptr& error);

    JobReceiver m_results; ///< receives what the worker posts
    std::shared_ptr<Worker> m_worker;
    Number m_lastNumber = 0;
    std::unordered_map<Number, Outcome> m_waiting;
    bool m_isClosed = false;
};

} // namespace orvanta
