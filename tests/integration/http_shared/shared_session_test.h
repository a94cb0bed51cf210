// SPDX-License-Identifier: MIT
#pragma once

#include "integration/http/exchange_outcome.h"
#include "integration/http_shared/outside_server.h"
#include "platform/curl/curl_sessions.h"

#include <gtest/gtest.h>

#include <memory>

namespace orvanta {

inline constexpr double kIdle = 1; // seconds; long for this machine, short for a test

// Exit statuses of curl.
inline constexpr int kNameUnknown = 6;
inline constexpr int kNotTrusted = 60;

/// A session for the outside world with one server there, and no variables.
class SharedSessionTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        s_server = new OutsideServer;
        ASSERT_TRUE(s_server->start());
    }
    static void TearDownTestSuite() {
        delete s_server;
        s_server = nullptr;
    }

    static std::unique_ptr<CurlSessions> sessionsWith(const EnvironmentVariables& variables) {
        return std::make_unique<CurlSessions>(watchExit, variables,
                                              HttpLimits{Seconds(kIdle), Seconds::max()});
    }
    /// Makes the session anew.
    void set(const QByteArray& variable, const QByteArray& value) {
        m_variables.set(variable, value);
        m_sessions = sessionsWith(m_variables);
    }
    void trustTheServer() { set("SSL_CERT_FILE", s_server->authority().toUtf8()); }

    ExchangeOutcome get(const QString& url) {
        return outcomeOf(m_sessions->sharedSession()->get(url));
    }
    ExchangeOutcome get(const char* scheme, const char* path) {
        return get(s_server->url(scheme, path));
    }

    static QByteArray bodyOf(const ExchangeOutcome& outcome) {
        EXPECT_TRUE(outcome.reply) << outcome.description().toStdString();
        return outcome.reply ? outcome.reply->body : QByteArray();
    }

    static inline OutsideServer* s_server = nullptr;
    EnvironmentVariables m_variables;
    std::unique_ptr<CurlSessions> m_sessions = sessionsWith({});
};

} // namespace orvanta
