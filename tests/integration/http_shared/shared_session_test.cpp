// SPDX-License-Identifier: MIT
#include "integration/http/exchange_outcome.h"
#include "integration/http/scripted_server.h"
#include "integration/http_shared/outside_server.h"
#include "orvanta_build_constants.h"
#include "platform/curl/http_session_factory.h"

#include <gtest/gtest.h>

#include <curl/curl.h>

#include <memory>

namespace orvanta {
namespace {

constexpr double kIdle = 1; // seconds; long for this machine, short for a test

const std::string kVariables[] = {"http_proxy",  "HTTP_PROXY", "https_proxy",
                                  "HTTPS_PROXY", "all_proxy",  "ALL_PROXY",
                                  "no_proxy",    "NO_PROXY",   "SSL_CERT_FILE"};

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

    static std::unique_ptr<CurlHttpSessionFactory>
    factoryWith(const EnvironmentVariables& variables) {
        return std::make_unique<CurlHttpSessionFactory>(variables,
                                                        HttpLimits{Seconds(kIdle), Seconds::max()});
    }
    void trustTheServer() {
        EnvironmentVariables variables;
        variables.set("SSL_CERT_FILE", s_server->authority().toUtf8());
        m_factory = factoryWith(variables);
    }

    ExchangeOutcome get(const QString& url) {
        return outcomeOf(m_factory->sharedSession()->get(url));
    }
    ExchangeOutcome get(const char* scheme, const char* path) {
        return get(s_server->url(scheme, path));
    }

    static QByteArray bodyOf(const ExchangeOutcome& outcome) {
        EXPECT_TRUE(outcome.reply) << outcome.description().toStdString();
        return outcome.reply ? outcome.reply->body : QByteArray();
    }

    static OutsideServer* s_server;
    std::unique_ptr<CurlHttpSessionFactory> m_factory = factoryWith({});
};

OutsideServer* SharedSessionTest::s_server = nullptr;

TEST_F(SharedSessionTest, IsOneAndTheSame) {
    EXPECT_EQ(m_factory->sharedSession(), m_factory->sharedSession());
    EXPECT_EQ(CurlHttpSessionFactory::kSharedLimits.idle, Seconds(60));
}

TEST_F(SharedSessionTest, AcceptsOnlyServersThatAreTrusted) {
    EXPECT_EQ(get("https", "/ok").code(), CURLE_PEER_FAILED_VERIFICATION);
    // What a library sets in the process is not what it was started with.
    qputenv("SSL_CERT_FILE", s_server->authority().toUtf8());
    EXPECT_EQ(get("https", "/ok").code(), CURLE_PEER_FAILED_VERIFICATION);
    trustTheServer();
    EXPECT_EQ(bodyOf(get("https", "/ok")), "fine");
    // The certificate is for another name.
    EXPECT_EQ(get(QStringLiteral("https://127.0.0.1:%1/ok").arg(s_server->port("https"))).code(),
              CURLE_PEER_FAILED_VERIFICATION);
}

TEST_F(SharedSessionTest, FollowsRedirectsToEncryptionButNotAwayFromIt) {
    trustTheServer();
    EXPECT_EQ(bodyOf(get("http", "/to-http")), "fine");
    EXPECT_EQ(bodyOf(get("http", "/to-https")), "fine");
    EXPECT_EQ(bodyOf(get("https", "/to-https")), "fine");
    for (const auto& [scheme, path] :
         {std::pair("https", "/to-http"), {"http", "/there-and-back"}}) {
        const ExchangeOutcome outcome = get(scheme, path);
        EXPECT_FALSE(outcome.reply) << path;
        EXPECT_EQ(outcome.description(),
                  QStringLiteral("The server at localhost:%1 redirected to an address without "
                                 "encryption.")
                      .arg(s_server->port(scheme)));
    }
    EXPECT_EQ(get("http", "/to-file").code(), CURLE_UNSUPPORTED_PROTOCOL);
    EXPECT_EQ(get(QStringLiteral("file:///etc/hostname")).code(), CURLE_UNSUPPORTED_PROTOCOL);
}

TEST_F(SharedSessionTest, FollowsTwentyRedirects) {
    EXPECT_EQ(bodyOf(get("http", "/hops/20")), "arrived");
    EXPECT_EQ(get("http", "/hops/21").code(), CURLE_TOO_MANY_REDIRECTS);
}

TEST_F(SharedSessionTest, GivesEveryStatusWithItsBody) {
    const ExchangeOutcome missing = get("http", "/missing");
    EXPECT_EQ(missing.status(), 404);
    EXPECT_EQ(bodyOf(missing), "no such page");
    const ExchangeOutcome unchanged = get("http", "/unchanged");
    EXPECT_EQ(unchanged.status(), 304);
    EXPECT_EQ(bodyOf(unchanged), "");
}

TEST_F(SharedSessionTest, SaysWhoItIsAndAsksForNothingSpecial) {
    const QByteArray expected = QByteArray("GET 1.1\nHost\nlocalhost:") +
                                QByteArray::number(s_server->port("http")) +
                                "\nUser-Agent\norvanta-tray/" + build::kVersion + "\nAccept\n*/*";
    EXPECT_EQ(bodyOf(get("http", "/request")), expected);
    EXPECT_EQ(bodyOf(get("http", "/cookie")), expected);
}

TEST_F(SharedSessionTest, FailsWhenTheReplyIsCut) {
    trustTheServer();
    for (const char* scheme : {"http", "https"}) {
        for (const char* path : {"/cut", "/cut-chunks"}) {
            const ExchangeOutcome outcome = get(scheme, path);
            EXPECT_TRUE(outcome.error) << scheme << path;
        }
    }
}

TEST_F(SharedSessionTest, LimitsSilenceAndNotTheWhole) {
    const ExchangeOutcome drip = get("http", "/drip");
    EXPECT_EQ(bodyOf(drip), "..........");
    EXPECT_GT(drip.seconds, 1.8 * kIdle);
    const ExchangeOutcome silence = get("http", "/silence");
    EXPECT_EQ(silence.code(), CURLE_OPERATION_TIMEDOUT);
    EXPECT_GE(silence.seconds, kIdle);
    EXPECT_LT(silence.seconds, kIdle + 5);
}

TEST_F(SharedSessionTest, TakesLargeBodies) {
    trustTheServer();
    for (const char* scheme : {"http", "https"}) {
        EXPECT_EQ(bodyOf(get(scheme, "/large")), QByteArray(40 * 1024 * 1024, 'x'));
    }
}

TEST_F(SharedSessionTest, EndsAReplyThatIsLargerThanTheCallerWants) {
    const auto upTo = [this](qsizetype largestBody) {
        return outcomeOf(
            m_factory->sharedSession()->get(s_server->url("http", "/large"), largestBody));
    };
    constexpr qsizetype kMebibyte = 1024 * 1024;
    EXPECT_EQ(bodyOf(upTo(40 * kMebibyte)).size(), 40 * kMebibyte);
    EXPECT_EQ(upTo(40 * kMebibyte - 1).code(), CURLE_FILESIZE_EXCEEDED);
    EXPECT_EQ(upTo(kMebibyte).description(),
              QStringLiteral("The reply of the server at localhost:%1 is larger than 1 MiB.")
                  .arg(s_server->port("http")));
}

TEST_F(SharedSessionTest, FailsWhereNobodyListens) {
    EXPECT_EQ(get(QStringLiteral("http://127.0.0.1:1/")).code(), CURLE_COULDNT_CONNECT);
    EXPECT_EQ(get(QStringLiteral("https://name.invalid/")).code(), CURLE_COULDNT_RESOLVE_HOST);
}

/// A variable that may name the proxy for an address, and whether it does.
struct ProxyVariable {
    const char* name;
    const char* scheme;
    bool isUsed;
};

class ProxyVariableTest : public SharedSessionTest,
                          public ::testing::WithParamInterface<ProxyVariable> {};

TEST_P(ProxyVariableTest, NamesTheProxyOfItsSchemes) {
    ScriptedServer proxy(replyAndClose("HTTP/1.1 403 No\r\nContent-Length: 0\r\n\r\n"));
    qputenv(GetParam().name, "http://" + proxy.authority().toUtf8());
    const QString url =
        QStringLiteral("%1://name.invalid/page").arg(QLatin1String(GetParam().scheme));
    const ExchangeOutcome outcome = get(url);
    if (!GetParam().isUsed) {
        EXPECT_EQ(outcome.code(), CURLE_COULDNT_RESOLVE_HOST);
        EXPECT_EQ(proxy.connections(), 0);
        return;
    }
    ASSERT_EQ(proxy.connections(), 1);
    const bool isTunnel = qstrcmp(GetParam().scheme, "https") == 0;
    EXPECT_TRUE(proxy.received(0).startsWith(isTunnel
                                                 ? "CONNECT name.invalid:443 HTTP/1.1\r\n"
                                                 : "GET http://name.invalid/page HTTP/1.1\r\n"));
    EXPECT_EQ(outcome.error.has_value(), isTunnel);
}

// HTTP_PROXY is what a web server hands its scripts for a header "Proxy", so libcurl is deaf to it.
INSTANTIATE_TEST_SUITE_P(
    Variables, ProxyVariableTest,
    ::testing::Values(
        ProxyVariable{"http_proxy", "http", true}, ProxyVariable{"HTTP_PROXY", "http", false},
        ProxyVariable{"https_proxy", "https", true}, ProxyVariable{"HTTPS_PROXY", "https", true},
        ProxyVariable{"http_proxy", "https", false}, ProxyVariable{"https_proxy", "http", false},
        ProxyVariable{"all_proxy", "http", true}, ProxyVariable{"all_proxy", "https", true},
        ProxyVariable{"ALL_PROXY", "http", true}, ProxyVariable{"ALL_PROXY", "https", true}),
    [](const auto& test) { return std::string(test.param.name) + "_for_" + test.param.scheme; });

struct Exception {
    const char* name;
    const char* value;
    const char* host;
    bool goesToTheProxy;
};

class NoProxyTest : public SharedSessionTest, public ::testing::WithParamInterface<Exception> {};

TEST_P(NoProxyTest, KeepsTheNamesInItFromTheProxy) {
    ScriptedServer proxy(replyAndClose("HTTP/1.1 200 Yes\r\nContent-Length: 5\r\n\r\nproxy"));
    qputenv("http_proxy", "http://" + proxy.authority().toUtf8());
    qputenv(GetParam().name, GetParam().value);
    const auto outcome = get(QStringLiteral("http://%1/").arg(QLatin1String(GetParam().host)));
    EXPECT_EQ(outcome.reply.has_value(), GetParam().goesToTheProxy);
    EXPECT_EQ(proxy.connections(), GetParam().goesToTheProxy ? 1 : 0);
}

INSTANTIATE_TEST_SUITE_P(
    Values, NoProxyTest,
    ::testing::Values(Exception{"no_proxy", "name.invalid", "name.invalid", false},
                      Exception{"NO_PROXY", "name.invalid", "name.invalid", false},
                      Exception{"no_proxy", "a.example,name.invalid", "name.invalid", false},
                      Exception{"NO_PROXY", "*", "name.invalid", false},
                      Exception{"no_proxy", "*", "name.invalid", false},
                      Exception{"no_proxy", "other.example", "name.invalid", true},
                      Exception{"no_proxy", "", "name.invalid", true}));

struct OwnAddress {
    const char* host;
    const char* variable;
    const char* noProxy;
};

/// Channels on this machine, with every proxy that the environment can name.
class LoopbackProxyTest : public SharedSessionTest,
                          public ::testing::WithParamInterface<OwnAddress> {};

TEST_P(LoopbackProxyTest, IsNeverUsed) {
    ScriptedServer proxy(replyAndClose("HTTP/1.1 200 Yes\r\nContent-Length: 5\r\n\r\nproxy"));
    qputenv(GetParam().variable, "http://" + proxy.authority().toUtf8());
    qputenv("no_proxy", GetParam().noProxy);
    // Nobody listens there, if there is such an address on this machine at all.
    const auto outcome = get(QStringLiteral("http://%1:1/").arg(QLatin1String(GetParam().host)));
    EXPECT_EQ(outcome.code(), CURLE_COULDNT_CONNECT);
    EXPECT_EQ(proxy.connections(), 0);
    EXPECT_EQ(bodyOf(get("http", "/ok")), "fine");
}

INSTANTIATE_TEST_SUITE_P(Addresses, LoopbackProxyTest,
                         ::testing::Values(OwnAddress{"localhost", "http_proxy", ""},
                                           OwnAddress{"LocalHost", "http_proxy", "a.example"},
                                           OwnAddress{"127.0.0.1", "http_proxy", ""},
                                           OwnAddress{"127.0.0.1", "all_proxy", "a.example,b"},
                                           OwnAddress{"127.200.3.4", "ALL_PROXY", "a.example"},
                                           OwnAddress{"127.1", "http_proxy", ""},
                                           OwnAddress{"[::1]", "http_proxy", ""},
                                           OwnAddress{"[0:0::1]", "all_proxy", ""}));

TEST_F(SharedSessionTest, TheProxyIsThatOfEachHopOfARedirect) {
    ScriptedServer proxy(replyAndClose("HTTP/1.1 403 No\r\nContent-Length: 0\r\n\r\n"));
    qputenv("all_proxy", "http://" + proxy.authority().toUtf8());
    EXPECT_TRUE(get("http", "/to-elsewhere").error);
    ASSERT_EQ(proxy.connections(), 1);
    EXPECT_TRUE(proxy.received(0).startsWith("CONNECT name.invalid:443 HTTP/1.1\r\n"));
}

TEST_F(SharedSessionTest, NeverSendsAPostTwice) {
    const ExchangeOutcome redirected =
        outcomeOf(m_factory->sharedSession()->post(s_server->url("http", "/once-more")));
    EXPECT_EQ(redirected.status(), 307);
    ScriptedServer closing(replyAndClose(QByteArray()));
    EXPECT_TRUE(outcomeOf(m_factory->sharedSession()->post(closing.url())).error);
    EXPECT_EQ(closing.requests(), 1);
}

} // namespace
} // namespace orvanta
