// SPDX-License-Identifier: MIT
#pragma once

#include "integration/http/exchange_outcome.h"
#include "integration/http_shared/outside_server.h"
#include "platform/curl/curl_sessions.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace orvanta {

inline constexpr double kIdle = 1; // seconds; long for this machine, short for a test

inline const std::string kVariables[] = {
    "http_proxy", "HTTP_PROXY", "https_proxy",   "HTTPS_PROXY",  "all_proxy",     "ALL_PROXY",
    "no_proxy",   "NO_PROXY",   "SSL_CERT_FILE", "SSL_CERT_DIR", "CURL_CA_BUNDLE"};

/// A session for the outside world with one server there, and no proxy.
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

    void SetUp() override {
        for (const std::string& name : kVariables) {
            qunsetenv(name.c_str());
        }
    }

    static std::unique_ptr<CurlSessions> sessionsWith(const EnvironmentVariables& variables) {
        return std::make_unique<CurlSessions>(watchExit, variables,
                                              HttpLimits{Seconds(kIdle), Seconds::max()});
    }
    void trustTheServer() {
        EnvironmentVariables variables;
        variables.set("SSL_CERT_FILE", s_server->authority().toUtf8());
        m_sessions = sessionsWith(variables);
    }

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
    std::unique_ptr<CurlSessions> m_sessions = sessionsWith({});
};

} // namespace orvanta
