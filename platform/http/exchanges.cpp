// SPDX-License-Identifier: MIT
#include "platform/http/exchanges.h"

#include <QCoreApplication>
#include <QMetaObject>

#include <utility>

namespace orvanta {

Completion<HttpOutcome>::Waiter Exchanges::start(std::unique_ptr<Exchange> exchange) {
    auto waiter = exchange->wait();
    if (!m_isClosed) {
        Exchange* const begun = exchange.get();
        m_running.emplace(begun, std::move(exchange));
        begun->begin([this, begun] { noteEnded(begun); });
    }
    return waiter;
}

void Exchanges::close() {
    m_isClosed = true;
    // Dropping them resumes their callers, who may come back here.
    const auto running = std::exchange(m_running, {});
    const auto ended = std::exchange(m_ended, {});
}

void Exchanges::noteEnded(Exchange* exchange) {
    auto ended = m_running.extract(exchange);
    if (!ended) {
        return; // it is being closed
    }
    m_ended.push_back(std::move(ended.mapped()));
    postSettle();
}

void Exchanges::postSettle() {
    if (std::exchange(m_settlePosted, true)) {
        return;
    }
    QMetaObject::invokeMethod(
        QCoreApplication::instance(),
        [weak = weak_from_this()] {
            if (const auto self = weak.lock()) {
                self->settle();
            }
        },
        Qt::QueuedConnection);
}

void Exchanges::settle() {
    m_settlePosted = false;
    if (m_ended.empty()) {
        return; // it has been closed
    }
    const auto exchange = std::move(m_ended.front());
    m_ended.pop_front();
    if (!m_ended.empty()) {
        // Posted now, not at its end: a caller that turns the loop is not given older jobs.
        postSettle();
    }
    exchange->deliver();
}

} // namespace orvanta
