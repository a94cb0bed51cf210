// SPDX-License-Identifier: MIT
#include "platform/curl/curl_sessions.h"

#include "platform/curl/web_exchange.h"
#include "platform/http/request_session.h"

#include <utility>

namespace orvanta {

CurlSessions::CurlSessions(ExitWatchFactory watchExits, const EnvironmentVariables& variables,
                           HttpLimits limits, QString executable)
    : m_exchanges(std::make_shared<Exchanges>()) {
    const auto makeExchange = [setup = curlSetup(std::move(watchExits), variables,
                                                 std::move(executable))](HttpRequest request) {
        return std::make_unique<WebExchange>(setup, std::move(request));
    };
    m_sharedSession =
        std::make_shared<RequestSession>(m_exchanges, makeExchange, limits, kLargestWebBody);
}

CurlSessions::~CurlSessions() {
    m_exchanges->close();
}

} // namespace orvanta
