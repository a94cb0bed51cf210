// SPDX-License-Identifier: MIT
#include "platform/qt/job_receiver.h"

#include <QCoreApplication>
#include <QEvent>

#include <memory>
#include <utility>

namespace orvanta {
namespace {

const auto kJobEvent = static_cast<QEvent::Type>(QEvent::registerEventType());

class JobEvent : public QEvent {
public:
    explicit JobEvent(std::function<void()> job) : QEvent(kJobEvent), m_job(std::move(job)) {}

    void run() const { m_job(); }

private:
    std::function<void()> m_job;
};

} // namespace

void JobReceiver::post(std::function<void()> job) {
    auto event = std::make_unique<JobEvent>(std::move(job));
    m_handedOver.fetch_add(1, std::memory_order_release);
    QCoreApplication::postEvent(this, event.release());
}

void JobReceiver::takeOver() const {
    static_cast<void>(m_handedOver.load(std::memory_order_acquire));
}

void JobReceiver::drop() {
    takeOver();
    QCoreApplication::removePostedEvents(this);
}

bool JobReceiver::event(QEvent* event) {
    takeOver();
    if (event->type() != kJobEvent) {
        return QObject::event(event);
    }
    static_cast<const JobEvent*>(event)->run();
    return true;
}

} // namespace orvanta
