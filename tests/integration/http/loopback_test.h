// SPDX-License-Identifier: MIT
#pragma once

#include "integration/http/exchange_outcome.h"
#include "integration/http/scripted_server.h"
#include "platform/curl/http_session_factory.h"

#include <gtest/gtest.h>

#include <memory>

namespace orvanta {

inline const QByteArray kOk = "HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nok";

/// A factory with one loopback session whose limits no test should reach.
class LoopbackTest : public ::testing::Test {
protected:
    std::shared_ptr<HttpSession> sessionWith(double idle, double whole) {
        return m_factory->makeLoopbackSession(HttpLimits{Seconds(idle), Seconds(whole)});
    }

    std::unique_ptr<CurlHttpSessionFactory> m_factory = std::make_unique<CurlHttpSessionFactory>();
    std::shared_ptr<HttpSession> m_session = sessionWith(20, 25);
};

} // namespace orvanta
