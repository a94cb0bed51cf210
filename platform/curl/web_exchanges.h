// SPDX-License-Identifier: MIT
#pragma once

#include "platform/curl/web_exchange.h"

#include <deque>
#include <memory>
#include <unordered_map>

namespace orvanta {

/// Runs any number of exchanges. Callers are resumed on a turn of the loop of their own, outside
/// every notifier and timer, so they may start new exchanges, drop sessions or close this object.
/// Main thread only.
class WebExchanges : public std::enable_shared_from_this<WebExchanges> {
public:
    ~WebExchanges() { close(); }

    /// Begins `exchange` and owns it until it is delivered. Throws `PlatformError` when it cannot
    /// begin. After `close` the exchange is abandoned.
    Completion<HttpReply>::Waiter start(std::unique_ptr<WebExchange> exchange);

    /// Ends all exchanges at once, abandoning their callers.
    void close();

private:
    void onEnded(WebExchange* exchange);
    void settle();

    std::unordered_map<WebExchange*, std::unique_ptr<WebExchange>> m_running;
    std::deque<std::unique_ptr<WebExchange>> m_ended; ///< to be delivered
    bool m_isClosed = false;
};

} // namespace orvanta
