// SPDX-License-Identifier: MIT
#include "integration/http/scripted_server.h"
#include "integration/http_shared/shared_session_test.h"
#include "platform/http/http_failure.h"

namespace orvanta {
namespace {

using SharedProxyTest = SharedSessionTest;

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
    set(GetParam().name, "http://" + proxy.authority().toUtf8());
    const QString url =
        QStringLiteral("%1://name.invalid/page").arg(QLatin1String(GetParam().scheme));
    const ExchangeOutcome outcome = get(url);
    if (!GetParam().isUsed) {
        EXPECT_EQ(outcome.code(), kNameUnknown);
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

TEST_F(SharedProxyTest, IsThatOfTheStartOfTheProcess) {
    ScriptedServer late(replyAndClose("HTTP/1.1 200 Yes\r\nContent-Length: 4\r\n\r\nlate"));
    // Neither a session that is there nor one that is made then looks at the process.
    qputenv("http_proxy", "http://" + late.authority().toUtf8());
    EXPECT_EQ(get(QStringLiteral("http://other.invalid/")).code(), kNameUnknown);
    set("no_proxy", "name.invalid");
    EXPECT_EQ(get(QStringLiteral("http://other.invalid/")).code(), kNameUnknown);
    qunsetenv("http_proxy");
    qputenv("no_proxy", "*");
    set("http_proxy", "http://" + late.authority().toUtf8());
    EXPECT_EQ(bodyOf(get(QStringLiteral("http://other.invalid/"))), "late");
    qunsetenv("no_proxy");
}

TEST_F(SharedProxyTest, TheReplyThroughATunnelIsThatOfTheServer) {
    trustTheServer();
    set("https_proxy", s_server->url("http", "").toUtf8());
    EXPECT_EQ(bodyOf(get(QStringLiteral("https://name.invalid/ok"))), "fine");
    const ExchangeOutcome missing = get(QStringLiteral("https://name.invalid/nothing"));
    EXPECT_EQ(missing.status(), 404);
    EXPECT_EQ(bodyOf(missing), "no such page");
}

struct Exception {
    const char* name;
    const char* value;
    const char* host;
    bool goesToTheProxy;
};

class NoProxyTest : public SharedSessionTest, public ::testing::WithParamInterface<Exception> {};

TEST_P(NoProxyTest, KeepsTheNamesInItFromTheProxy) {
    ScriptedServer proxy(replyAndClose("HTTP/1.1 200 Yes\r\nContent-Length: 5\r\n\r\nproxy"));
    set("http_proxy", "http://" + proxy.authority().toUtf8());
    set(GetParam().name, GetParam().value);
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
    set(GetParam().variable, "http://" + proxy.authority().toUtf8());
    set("no_proxy", GetParam().noProxy);
    // Nobody listens there, if there is such an address on this machine at all.
    const auto outcome = get(QStringLiteral("http://%1:1/").arg(QLatin1String(GetParam().host)));
    EXPECT_EQ(outcome.code(), http_failure::kNotReached);
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

TEST_F(SharedProxyTest, TheProxyIsThatOfEachHopOfARedirect) {
    ScriptedServer proxy(replyAndClose("HTTP/1.1 403 No\r\nContent-Length: 0\r\n\r\n"));
    set("all_proxy", "http://" + proxy.authority().toUtf8());
    EXPECT_TRUE(get("http", "/to-elsewhere").error);
    ASSERT_EQ(proxy.connections(), 1);
    EXPECT_TRUE(proxy.received(0).startsWith("CONNECT name.invalid:443 HTTP/1.1\r\n"));
}

} // namespace
} // namespace orvanta
