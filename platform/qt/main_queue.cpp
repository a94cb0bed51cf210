// SPDX-License-Identifier: MIT
#include "platform/qt/main_queue.h"

#include <utility>

namespace orvanta {
namespace {

class Repetition : public RepeatingTimer {
public:
    Repetition(std::weak_ptr<TimerTable> timers, int id) : m_timers(std::move(timers)), m_id(id) {}
    Repetition(const Repetition&) = delete;
    Repetition& operator=(const Repetition&) = delete;
    ~Repetition() override {
        if (const auto timers = m_timers.lock()) {
            timers->remove(m_id);
        }
    }

private:
    std::weak_ptr<TimerTable> m_timers;
    int m_id;
};

} // namespace

QtMainQueue::~QtMainQueue() {
    // While everything is still in working order: the tasks that this unwinds may use the queue.
    m_timers->clear();
    m_jobs.drop();
    m_timers->clear();
}

void QtMainQueue::post(std::function<void()> job) {
    m_jobs.post(std::move(job));
}

void QtMainQueue::after(Seconds delay, std::function<void()> job) {
    m_timers->add(delay, std::move(job), false);
}

std::unique_ptr<RepeatingTimer> QtMainQueue::repeat(Seconds interval, std::function<void()> tick) {
    return std::make_unique<Repetition>(m_timers, m_timers->add(interval, std::move(tick), true));
}

Completion<Done>::Waiter QtMainQueue::wakeAfter(Seconds duration) {
    Completion<Done> completion;
    auto waiter = completion.wait();
    after(duration, [completion = std::move(completion)] { completion.decide(Done{}); });
    return waiter;
}

Task<> QtMainQueue::sleep(Seconds duration) {
    auto waiter = wakeAfter(duration);
    co_await waiter;
}

} // namespace orvanta
