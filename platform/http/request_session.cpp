// SPDX-License-Identifier: MIT
#include "platform/http/request_session.h"

#include <algorithm>
#include <utility>

namespace orvanta {
namespace {

// A free function, so that the exchange does not need the session that began it.
Task<HttpOutcome> perform(std::shared_ptr<Exchanges> exchanges,
                          std::unique_ptr<Exchange> exchange) {
    auto outcome = exchanges->start(std::move(exchange));
    co_return co_await outcome;
}

} // namespace

RequestSession::RequestSession(std::shared_ptr<Exchanges> exchanges, MakeExchange makeExchange,
                               HttpLimits limits, qsizetype largestBody)
    : m_exchanges(std::move(exchanges)), m_makeExchange(std::move(makeExchange)), m_limits(limits),
      m_largestBody(largestBody) {}

Task<HttpOutcome> RequestSession::get(QString url, qsizetype largestBody) {
    return send({HttpMethod::Get, std::move(url), m_limits, std::min(largestBody, m_largestBody)});
}

Task<HttpOutcome> RequestSession::post(QString url) {
    return send({HttpMethod::Post, std::move(url), postLimits(m_limits), m_largestBody});
}

Task<HttpOutcome> RequestSession::send(HttpRequest request) const {
    return perform(m_exchanges, m_makeExchange(std::move(request)));
}

} // namespace orvanta
