// SPDX-License-Identifier: MIT
#pragma once

#include "platform/beast/loopback_exchange.h"

#include <deque>
#include <memory>
#include <unordered_map>

namespace orvanta {

/// Drives any number of exchanges with servers on this machine from the main thread's event loop.
///
/// Callers are resumed on a later turn of the loop, outside every notifier and timer, so they may
/// begin new exchanges, drop sessions or close this object. Main thread only.
class LoopbackExchanges : public std::enable_shared_from_this<LoopbackExchanges> {
public:
    LoopbackExchanges() = default;
    LoopbackExchanges(const LoopbackExchanges&) = delete;
    LoopbackExchanges& operator=(const LoopbackExchanges&) = delete;
    ~LoopbackExchanges() { close(); }

    /// After `close` the exchange is abandoned.
    Completion<HttpReply>::Waiter start(LoopbackRequest request);

    /// Ends all exchanges at once, abandoning their callers.
    void close();

private:
    void noteEnded(LoopbackExchange* exchange);
    void settle();

    std::unordered_map<LoopbackExchange*, std::unique_ptr<LoopbackExchange>> m_running;
    std::deque<std::unique_ptr<LoopbackExchange>> m_ended; ///< to be delivered
    bool m_isClosed = false;
    bool m_settlePosted = false;
};

} // namespace orvanta
