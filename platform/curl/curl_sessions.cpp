// SPDX-License-Identifier: MIT
#include "platform/curl/curl_sessions.h"

#include "platform/curl/web_exchanges.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <utility>

namespace orvanta {
namespace {

// A free function, so that the exchange does not need the session that began it.
Task<HttpReply> perform(std::shared_ptr<WebExchanges> exchanges, CurlSetup setup,
                        WebRequest request) {
    auto reply = exchanges->start(std::make_unique<WebExchange>(setup, request));
    co_return co_await reply;
}

/// curl does not run in our folder, from which the name of the file may go.
QString trustStoreIn(const EnvironmentVariables& variables) {
    const QByteArray file = variables.value("SSL_CERT_FILE").value_or(QByteArray());
    return file.isEmpty() ? QString() : QFileInfo(QFile::decodeName(file)).absoluteFilePath();
}

class CurlSession : public HttpSession {
public:
    CurlSession(std::shared_ptr<WebExchanges> exchanges, CurlSetup setup, HttpLimits limits)
        : m_exchanges(std::move(exchanges)), m_setup(std::move(setup)), m_limits(limits) {}

    using HttpSession::get;
    Task<HttpReply> get(QString url, qsizetype largestBody) override {
        return send(
            {HttpMethod::Get, std::move(url), m_limits, std::min(largestBody, kLargestWebBody)});
    }
    Task<HttpReply> post(QString url) override {
        return send({HttpMethod::Post, std::move(url), postLimits(m_limits), kLargestWebBody});
    }

private:
    Task<HttpReply> send(WebRequest request) {
        return perform(m_exchanges, m_setup, std::move(request));
    }

    std::shared_ptr<WebExchanges> m_exchanges;
    CurlSetup m_setup;
    HttpLimits m_limits;
};

} // namespace

CurlSessions::CurlSessions(ExitWatchFactory watchExits, const EnvironmentVariables& variables,
                           HttpLimits limits, QString executable)
    : m_exchanges(std::make_shared<WebExchanges>()) {
    CurlSetup setup{std::move(watchExits), std::move(executable), trustStoreIn(variables)};
    m_sharedSession = std::make_shared<CurlSession>(m_exchanges, std::move(setup), limits);
}

CurlSessions::~CurlSessions() {
    m_exchanges->close();
}

} // namespace orvanta
