// SPDX-License-Identifier: MIT
#include "platform/curl/http_session_factory.h"

#include "platform/curl/curl_exchange.h"
#include "platform/curl/curl_multi.h"
#include "platform/curl/loopback_options.h"
#include "platform/curl/shared_options.h"

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

constexpr SessionKind kLoopback{&setLoopbackOptions, qsizetype{16} * 1024 * 1024};
constexpr SessionKind kShared{&setSharedOptions, qsizetype{2} * 1024 * 1024 * 1024};

class CurlHttpSession : public HttpSession {
public:
    CurlHttpSession(std::shared_ptr<CurlMulti> multi, HttpLimits limits, SessionKind kind)
        : m_multi(std::move(multi)), m_limits(limits), m_kind(kind) {}

    Task<HttpReply> get(QString url) override {
        return send(HttpMethod::Get, std::move(url), m_limits);
    }
    Task<HttpReply> post(QString url) override {
        return send(HttpMethod::Post, std::move(url), postLimits(m_limits));
    }

private:
    Task<HttpReply> send(HttpMethod method, QString url, HttpLimits limits) {
        CurlRequest request{method, std::move(url), limits, m_kind.options, m_kind.largestBody};
        return perform(m_multi, std::move(request));
    }

    std::shared_ptr<CurlMulti> m_multi;
    HttpLimits m_limits;
    SessionKind m_kind;
};

} // namespace

CurlHttpSessionFactory::CurlHttpSessionFactory(HttpLimits sharedLimits)
    : m_multi(std::make_shared<CurlMulti>()),
      m_sharedSession(std::make_shared<CurlHttpSession>(m_multi, sharedLimits, kShared)) {}

CurlHttpSessionFactory::~CurlHttpSessionFactory() {
    m_multi->close();
}

std::shared_ptr<HttpSession> CurlHttpSessionFactory::makeLoopbackSession(HttpLimits limits) {
    return std::make_shared<CurlHttpSession>(m_multi, limits, kLoopback);
}

std::shared_ptr<HttpSession> CurlHttpSessionFactory::sharedSession() {
    return m_sharedSession;
}

} // namespace orvanta
