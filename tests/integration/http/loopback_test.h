// SPDX-License-Identifier: MIT
#pragma once

#include "integration/http/exchange_outcome.h"
#include "integration/http/scripted_server.h"
#include "platform/beast/loopback_sessions.h"

#include <gtest/gtest.h>

#include <memory>

namespace orvanta {

inline const QByteArray kOk = "HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nok";

/// One loopback session whose limits no test should reach.
class LoopbackTest : public ::testing::Test {
protected:
    std::shared_ptr<HttpSession> sessionWith(double idle, double whole) {
        return m_sessions->make(HttpLimits{Seconds(idle), Seconds(whole)});
    }

    std::unique_ptr<LoopbackSessions> m_sessions = std::make_unique<LoopbackSessions>();
    std::shared_ptr<HttpSession> m_session = sessionWith(20, 25);
};

} // namespace orvanta
