// SPDX-License-Identifier: MIT
#include "platform/http/exchanges.h"

#include <QCoreApplication>
#include <QMetaObject>
#include <QObject>
#include <QScopeGuard>

#include <utility>

namespace orvanta {
namespace {

/// Goes when the loop that it was made in goes on, not in one that is turned meanwhile.
class Retired : public QObject {
public:
    explicit Retired(std::unique_ptr<Exchange> exchange) : m_exchange(std::move(exchange)) {
        deleteLater();
    }

private:
    const std::unique_ptr<Exchange> m_exchange;
};

} // namespace

Completion<HttpOutcome>::Waiter Exchanges::start(std::unique_ptr<Exchange> exchange) {
    auto waiter = exchange->wait();
    if (!m_isClosed) {
        Exchange* const begun = exchange.get();
        m_running.emplace(begun, std::move(exchange));
        m_beginning = begun;
        const auto hasBegun = qScopeGuard([this] { m_beginning = nullptr; });
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
    if (exchange == m_beginning) {
        m_ended.push_back(std::move(ended.mapped()));
        postSettle();
    } else {
        deliver(std::move(ended.mapped()));
    }
}

void Exchanges::deliver(std::unique_ptr<Exchange> exchange) {
    exchange->deliver();
    new Retired(std::move(exchange));
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
    auto exchange = std::move(m_ended.front());
    m_ended.pop_front();
    if (!m_ended.empty()) {
        // Posted now, not at its end: a caller that turns the loop is not given older jobs.
        postSettle();
    }
    deliver(std::move(exchange));
}

} // namespace orvanta
