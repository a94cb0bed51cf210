// SPDX-License-Identifier: MIT
#pragma once

#include "platform/beast/loopback_sessions.h"
#include "platform/curl/curl_sessions.h"
#include "platform/http_session.h"

#include <memory>

namespace orvanta {

/// The real sessions. As that of its parts, its end abandons what is under way.
class HttpSessions : public HttpSessionFactory {
public:
    explicit HttpSessions(const EnvironmentVariables& variables)
        : m_outside(watchExit, variables) {}

    std::shared_ptr<HttpSession> makeLoopbackSession(HttpLimits limits) override {
        return m_loopback.make(limits);
    }
    std::shared_ptr<HttpSession> sharedSession() override { return m_outside.sharedSession(); }

private:
    LoopbackSessions m_loopback;
    CurlSessions m_outside;
};

} // namespace orvanta
