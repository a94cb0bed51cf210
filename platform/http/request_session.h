// SPDX-License-Identifier: MIT
#pragma once

#include "platform/http/exchanges.h"
#include "platform/http/http_request.h"
#include "platform/http_session.h"

#include <QString>

#include <functional>
#include <memory>

namespace orvanta {

/// A session whose requests are exchanges of one kind.
class RequestSession : public HttpSession {
public:
    using MakeExchange = std::function<std::unique_ptr<Exchange>(HttpRequest)>;

    /// `largestBody` in bytes, of any reply, however many the caller would take.
    RequestSession(std::shared_ptr<Exchanges> exchanges, MakeExchange makeExchange,
                   HttpLimits limits, qsizetype largestBody);

    using HttpSession::get;
    Task<HttpOutcome> get(QString url, qsizetype largestBody) override;
    Task<HttpOutcome> post(QString url) override;

private:
    Task<HttpOutcome> send(HttpRequest request) const;

    const std::shared_ptr<Exchanges> m_exchanges;
    const MakeExchange m_makeExchange;
    const HttpLimits m_limits;
    const qsizetype m_largestBody;
};

} // namespace orvanta
