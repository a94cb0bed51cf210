// SPDX-License-Identifier: MIT
#include "platform/beast/loopback_exchanges.h"

#include <QCoreApplication>
#include <QMetaObject>

#include <utility>

namespace orvanta {

Completion<HttpReply>::Waiter LoopbackExchanges::start(LoopbackRequest request) {
    auto owned = std::make_unique<LoopbackExchange>(
        std::move(request), [this](LoopbackExchange* ended) { noteEnded(ended); });
    auto waiter = owned->wait();
    if (!m_isClosed) {
        LoopbackExchange* exchange = owned.get();
        m_running.emplace(exchange, std::move(owned));
        exchange->begin();
    }
    return waiter;
}

void LoopbackExchanges::close() {
    m_isClosed = true;
    // Dropping them resumes their callers, who may come back here.
    const auto running = std::exchange(m_running, {});
    const auto ended = std::exchange(m_ended, {});
}

void LoopbackExchanges::noteEnded(LoopbackExchange* exchange) {
    m_ended.push_back(std::move(m_running.extract(exchange).mapped()));
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

void LoopbackExchanges::settle() {
    m_settlePosted = false;
    // Not what ends meanwhile: a caller that begins anew at each failure would hold up the loop.
    for (auto due = m_ended.size(); due > 0 && !m_ended.empty(); --due) {
        const auto exchange = std::move(m_ended.front());
        m_ended.pop_front();
        exchange->deliver();
    }
}

} // namespace orvanta
