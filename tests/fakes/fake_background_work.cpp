// SPDX-License-Identifier: MIT
#include "fakes/fake_background_work.h"

#include "base/platform_error.h"

#include <utility>

namespace orvanta::fakes {

Task<> FakeBackgroundWork::run(std::function<void()> body) {
    ++jobCount;
    Job job{std::move(body), {}};
    auto waiter = job.completion.wait();
    if (holdsJobs) {
        m_held.push_back(std::move(job));
    } else {
        m_queue.post([this, job = std::move(job)] { perform(job); });
    }
    const std::exception_ptr thrown = co_await waiter;
    if (thrown) {
        std::rethrow_exception(thrown);
    }
}

void FakeBackgroundWork::perform(const Job& job) {
    std::exception_ptr thrown;
    m_runningJob = true;
    try {
        job.body();
    } catch (const PlatformError&) {
        thrown = std::current_exception();
    }
    m_runningJob = false;
    m_queue.post([completion = job.completion, thrown] { completion.decide(thrown); });
}

void FakeBackgroundWork::releaseOne() {
    const Job job = std::move(m_held.front());
    m_held.pop_front();
    perform(job);
}

void FakeBackgroundWork::shutDown() {
    while (!m_held.empty()) {
        const auto dropped = std::exchange(m_held, {});
    }
}

} // namespace orvanta::fakes
