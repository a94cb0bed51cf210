// SPDX-License-Identifier: MIT
#include "platform/qt/background_work.h"

#include "platform/posix/posix_error.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

namespace orvanta {

/// What the two threads share. The thread keeps it alive, and may outlive everything else.
class QtBackgroundWork::Worker {
public:
    struct Job {
        Number number;
        std::function<void()> work;
    };
    using Report = std::function<void(Number, std::exception_ptr)>;

    /// `report` is called on the worker thread, and never after `close` has returned.
    explicit Worker(Report report) : m_report(std::move(report)) {}

    static void start(std::shared_ptr<Worker> self) {
        try {
            std::thread([self = std::move(self)] { self->runJobs(); }).detach();
        } catch (const std::system_error& error) {
            throw posixError(error.code().value(), QStringLiteral("A thread could not be started"));
        }
    }

    void add(Job job) {
        const std::lock_guard guard(m_mutex);
        m_jobs.push_back(std::move(job));
        m_changed.notify_one();
    }

    void close() {
        std::deque<Job> dropped;
        const std::lock_guard guard(m_mutex);
        m_report = nullptr;
        dropped.swap(m_jobs);
        m_changed.notify_one();
    }

private:
    void runJobs() {
        std::unique_lock lock(m_mutex);
        while (true) {
            m_changed.wait(lock, [this] { return !m_jobs.empty() || m_report == nullptr; });
            if (m_report == nullptr) {
                return;
            }
            Job job = std::move(m_jobs.front());
            m_jobs.pop_front();
            lock.unlock();
            std::exception_ptr error = outcomeOf(std::move(job.work));
            lock.lock();
            if (m_report != nullptr) {
                m_report(job.number, std::move(error));
            }
        }
    }

    /// What the job holds is gone when this returns.
    static std::exception_ptr outcomeOf(std::function<void()> work) {
        try {
            work();
            return nullptr;
        } catch (...) {
            return std::current_exception();
        }
    }

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<Job> m_jobs;
    Report m_report; ///< none once closed
};

QtBackgroundWork::QtBackgroundWork() = default;

QtBackgroundWork::~QtBackgroundWork() {
    m_isClosed = true;
    if (m_worker != nullptr) {
        m_worker->close();
    }
    // Those that this abandons may come back here.
    const auto abandoned = std::exchange(m_waiting, {});
}

Task<> QtBackgroundWork::run(std::function<void()> job) {
    auto waiter = enqueue(std::move(job));
    if (const std::exception_ptr error = co_await waiter) {
        std::rethrow_exception(error);
    }
}

QtBackgroundWork::Outcome::Waiter QtBackgroundWork::enqueue(std::function<void()> job) {
    const Outcome outcome;
    if (!m_isClosed) {
        worker().add({++m_lastNumber, std::move(job)});
        m_waiting.emplace(m_lastNumber, outcome);
    }
    return outcome.wait();
}

QtBackgroundWork::Worker& QtBackgroundWork::worker() {
    if (m_worker == nullptr) {
        auto worker = std::make_shared<Worker>([this](Number number, std::exception_ptr error) {
            m_results.post([this, number, error = std::move(error)] { finish(number, error); });
        });
        Worker::start(worker);
        m_worker = std::move(worker);
    }
    return *m_worker;
}

void QtBackgroundWork::finish(Number number, const std::exception_ptr& error) {
    const auto outcome = m_waiting.extract(number);
    outcome.mapped().decide(error);
}

} // namespace orvanta
