// SPDX-License-Identifier: MIT
#pragma once

#include "platform/http/exchange.h"

#include <deque>
#include <memory>
#include <unordered_map>

namespace orvanta {

/// Owns the exchanges that are under way. A caller is resumed as soon as its exchange has ended, or
/// on a later turn of the loop if that was while it was begun. It may begin new exchanges, drop
/// sessions or close this object: what has ended is destroyed when the loop has come back from the
/// notifier or timer that ended it. Main thread only, with a `QCoreApplication`.
class Exchanges : public std::enable_shared_from_this<Exchanges> {
public:
    Exchanges() = default;
    Exchanges(const Exchanges&) = delete;
    Exchanges& operator=(const Exchanges&) = delete;
    ~Exchanges() { close(); }

    /// Begins `exchange` and owns it until it is delivered. After `close` it is abandoned.
    Completion<HttpOutcome>::Waiter start(std::unique_ptr<Exchange> exchange);

    /// Ends all exchanges at once, abandoning their callers.
    void close();

private:
    void noteEnded(Exchange* exchange);
    static void deliver(std::unique_ptr<Exchange> exchange);
    void postSettle();
    void settle();

    std::unordered_map<Exchange*, std::unique_ptr<Exchange>> m_running;
    std::deque<std::unique_ptr<Exchange>> m_ended; ///< while they were begun; to be delivered
    Exchange* m_beginning = nullptr;               ///< while its begin() runs
    bool m_isClosed = false;
    bool m_settlePosted = false;
};

} // namespace orvanta
