// SPDX-License-Identifier: MIT
#include "platform/curl/http_session_factory.h"

#include "platform/curl/curl_exchange.h"
#include "platform/curl/curl_multi.h"
#include "platform/curl/loopback_options.h"
#include "platform/curl/shared_options.h"

#include <algorithm>
#include <utility>

namespace orvanta {

namespace {

// A free function, so that the exchange does not need the session that began it.
Task<HttpReply> perform(std::shared_ptr<CurlMulti> multi, CurlRequest request) {
    auto reply = multi->start(std::make_unique<CurlExchange>(request));
    co_return co_await reply;
}

/// What tells one kind of session from the other.
struct SessionKind {
    EasyOptions options;
    qsizetype largestBody;
};

SessionKind loopbackKind() {
    return {&setLoopbackOptions, qsizetype{16} * 1024 * 1024};
}

SessionKind sharedKind(const EnvironmentVariables& variables) {
    // libcurl, unlike OpenSSL's own programs, does not look for it.
    const QByteArray trustStore = variables.value("SSL_CERT_FILE").value_or(QByteArray());
    return {[trustStore](CURL* easy) { setSharedOptions(easy, trustStore); },
            qsizetype{2} * 1024 * 1024 * 1024};
}

class CurlHttpSession : public HttpSession {
public:
    CurlHttpSession(std::shared_ptr<CurlMulti> multi, HttpLimits limits, SessionKind kind)
        : m_multi(std::move(multi)), m_limits(limits), m_kind(std::move(kind)) {}

    using HttpSession::get;
    Task<HttpReply> get(QString url, qsizetype largestBody) override {
        return send({HttpMethod::Get, std::move(url), m_limits, m_kind.options,
                     std::min(largestBody, m_kind.largestBody)});
    }
    Task<HttpReply> post(QString url) override {
        return send({HttpMethod::Post, std::move(url), postLimits(m_limits), m_kind.options,
                     m_kind.largestBody});
    }

private:
    Task<HttpReply> send(CurlRequest request) { return perform(m_multi, std::move(request)); }

    std::shared_ptr<CurlMulti> m_multi;
    HttpLimits m_limits;
    SessionKind m_kind;
};

} // namespace

CurlHttpSessionFactory::CurlHttpSessionFactory(const EnvironmentVariables& variables,
                                               HttpLimits sharedLimits)
    : m_multi(std::make_shared<CurlMulti>()), m_sharedSession(std::make_shared<CurlHttpSession>(
                                                  m_multi, sharedLimits, sharedKind(variables))) {}

CurlHttpSessionFactory::~CurlHttpSessionFactory() {
    m_multi->close();
}

std::shared_ptr<HttpSession> CurlHttpSessionFactory::makeLoopbackSession(HttpLimits limits) {
    return std::make_shared<CurlHttpSession>(m_multi, limits, loopbackKind());
}

std::shared_ptr<HttpSession> CurlHttpSessionFactory::sharedSession() {
    return m_sharedSession;
}

} // namespace orvanta
