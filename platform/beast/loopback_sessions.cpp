// SPDX-License-Identifier: MIT
#include "platform/beast/loopback_sessions.h"

#include "platform/beast/loopback_exchanges.h"

#include <algorithm>
#include <utility>

namespace orvanta {
namespace {

constexpr qsizetype kLargestBody = qsizetype{16} * 1024 * 1024;

// A free function, so that the exchange does not need the session that began it.
Task<HttpReply> perform(std::shared_ptr<LoopbackExchanges> exchanges, LoopbackRequest request) {
    auto reply = exchanges->start(std::move(request));
    co_return co_await reply;
}

class LoopbackSession : public HttpSession {
public:
    LoopbackSession(std::shared_ptr<LoopbackExchanges> exchanges, HttpLimits limits)
        : m_exchanges(std::move(exchanges)), m_limits(limits) {}

    using HttpSession::get;
    Task<HttpReply> get(QString url, qsizetype largestBody) override {
        return perform(m_exchanges, {LoopbackRequest::Method::Get, std::move(url), m_limits,
                                     std::min(largestBody, kLargestBody)});
    }
    Task<HttpReply> post(QString url) override {
        return perform(m_exchanges, {LoopbackRequest::Method::Post, std::move(url),
                                     postLimits(m_limits), kLargestBody});
    }

private:
    std::shared_ptr<LoopbackExchanges> m_exchanges;
    HttpLimits m_limits;
};

} // namespace

LoopbackSessions::LoopbackSessions() : m_exchanges(std::make_shared<LoopbackExchanges>()) {}

LoopbackSessions::~LoopbackSessions() {
    m_exchanges->close();
}

std::shared_ptr<HttpSession> LoopbackSessions::make(HttpLimits limits) {
    return std::make_shared<LoopbackSession>(m_exchanges, limits);
}

} // namespace orvanta
