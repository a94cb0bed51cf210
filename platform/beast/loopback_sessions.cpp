// SPDX-License-Identifier: MIT
#include "platform/beast/loopback_sessions.h"

#include "platform/beast/loopback_exchange.h"
#include "platform/http/request_session.h"

#include <utility>

namespace orvanta {
namespace {

constexpr qsizetype kLargestBody = qsizetype{16} * 1024 * 1024;

std::unique_ptr<Exchange> makeExchange(HttpRequest request) {
    return std::make_unique<LoopbackExchange>(std::move(request));
}

} // namespace

LoopbackSessions::LoopbackSessions() : m_exchanges(std::make_shared<Exchanges>()) {}

LoopbackSessions::~LoopbackSessions() {
    m_exchanges->close();
}

std::shared_ptr<HttpSession> LoopbackSessions::make(HttpLimits limits) {
    return std::make_shared<RequestSession>(m_exchanges, makeExchange, limits, kLargestBody);
}

} // namespace orvanta
