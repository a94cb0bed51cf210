// SPDX-License-Identifier: MIT
#include "integration/http/loopback_test.h"

#include <cstdlib>

namespace orvanta {
namespace {

using LoopbackRequest = LoopbackTest;

TEST_F(LoopbackRequest, GetSendsItsLineAndNothingOfOurs) {
    ScriptedServer server(replyWith(kOk));
    const auto outcome = outcomeOf(m_session->get(server.url(QStringLiteral("/api/ov/status"))));
    EXPECT_EQ(outcome.status(), 200);
    EXPECT_EQ(outcome.reply->body, "ok");
    EXPECT_EQ(server.received(0), "GET /api/ov/status HTTP/1.1\r\nHost: " +
                                      server.authority().toLatin1() + "\r\nAccept: */*\r\n\r\n");
}

TEST_F(LoopbackRequest, PostIsEmptyAndKeepsTheQuery) {
    ScriptedServer server(replyWith(kOk));
    const auto outcome =
        outcomeOf(m_session->post(server.url(QStringLiteral("/api/ov/logout?unpair=1"))));
    EXPECT_EQ(outcome.status(), 200);
    EXPECT_TRUE(outcome.reply->body.isEmpty());
    EXPECT_EQ(server.received(0),
              "POST /api/ov/logout?unpair=1 HTTP/1.1\r\nHost: " + server.authority().toLatin1() +
                  "\r\nAccept: */*\r\nContent-Length: 0\r\n\r\n");
}

TEST_F(LoopbackRequest, EveryStatusIsAReply) {
    for (const int status : {200, 201, 204, 299, 302, 304, 400, 401, 404, 500, 503}) {
        QByteArray reply = "HTTP/1.1 " + QByteArray::number(status) + " Text\r\n";
        reply += status == 204 || status == 304 ? "\r\n" : "Content-Length: 4\r\n\r\nbody";
        ScriptedServer server(replyWith(reply));
        EXPECT_EQ(outcomeOf(m_session->get(server.url())).status(), status);
        EXPECT_EQ(outcomeOf(m_session->post(server.url())).status(), status);
        EXPECT_EQ(server.requests(), 2);
    }
}

TEST_F(LoopbackRequest, BodyComesInEveryFraming) {
    ScriptedServer chunked(replyWith("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n"
                                     "3\r\nabc\r\n2\r\nde\r\n0\r\nTrailer: x\r\n\r\n"));
    EXPECT_EQ(outcomeOf(m_session->get(chunked.url())).reply.value().body, "abcde");
    ScriptedServer untilClose(replyAndClose("HTTP/1.0 200 OK\r\n\r\nabcde"));
    EXPECT_EQ(outcomeOf(m_session->get(untilClose.url())).reply.value().body, "abcde");
    ScriptedServer interim(replyWith("HTTP/1.1 100 Continue\r\n\r\n" + kOk));
    EXPECT_EQ(outcomeOf(m_session->get(interim.url())).reply.value().body, "ok");
    EXPECT_EQ(outcomeOf(m_session->post(interim.url())).status(), 200);
}

TEST_F(LoopbackRequest, RedirectIsNotFollowed) {
    ScriptedServer target(replyWith(kOk));
    ScriptedServer server(replyWith("HTTP/1.1 302 Found\r\nLocation: " + target.url().toLatin1() +
                                    "\r\nContent-Length: 0\r\n\r\n"));
    EXPECT_EQ(outcomeOf(m_session->get(server.url())).status(), 302);
    EXPECT_EQ(outcomeOf(m_session->post(server.url())).status(), 302);
    spinFor(std::chrono::milliseconds(100));
    EXPECT_EQ(server.requests(), 2);
    EXPECT_EQ(target.connections(), 0);
}

TEST_F(LoopbackRequest, CookieIsNotSentBack) {
    ScriptedServer server(replyWith("HTTP/1.1 200 OK\r\nSet-Cookie: a=b; Path=/\r\n"
                                    "Content-Length: 0\r\n\r\n"));
    outcomeOf(m_session->get(server.url()));
    outcomeOf(m_session->get(server.url()));
    ASSERT_EQ(server.connections(), 2);
    EXPECT_EQ(server.received(1), server.received(0));
}

TEST_F(LoopbackRequest, RequestWithoutReplyIsNotSentAgain) {
    ScriptedServer server([](QTcpSocket& peer) { peer.disconnectFromHost(); });
    EXPECT_EQ(outcomeOf(m_session->get(server.url())).code(), 52);
    EXPECT_EQ(outcomeOf(m_session->post(server.url())).code(), 52);
    spinFor(std::chrono::milliseconds(100));
    EXPECT_EQ(server.requests(), 2);
    EXPECT_EQ(server.connections(), 2);
}

// A connection kept from an earlier exchange is where clients send a request twice.
TEST_F(LoopbackRequest, RequestWithoutReplyIsNotSentAgainAfterOneWithReply) {
    int answered = 0;
    ScriptedServer server([&answered](QTcpSocket& peer) {
        if (++answered == 1) {
            peer.write(kOk);
        } else {
            peer.disconnectFromHost();
        }
    });
    EXPECT_EQ(outcomeOf(m_session->post(server.url())).status(), 200);
    EXPECT_EQ(outcomeOf(m_session->post(server.url())).code(), 52);
    spinFor(std::chrono::milliseconds(100));
    EXPECT_EQ(server.requests(), 2);
}

TEST_F(LoopbackRequest, FirstRequestAfterARestartOfTheServerSucceeds) {
    auto server = std::make_unique<ScriptedServer>(replyWith(kOk));
    const quint16 port = server->port();
    for (int round = 0; round < 50; ++round) {
        ASSERT_EQ(outcomeOf(m_session->post(server->url())).status(), 200) << round;
        server.reset();
        server = std::make_unique<ScriptedServer>(replyWith(kOk), port);
        ASSERT_EQ(outcomeOf(m_session->post(server->url())).status(), 200) << round;
        ASSERT_EQ(server->requests(), 1);
    }
}

TEST(LoopbackEnvironment, ProxyVariablesAreIgnored) {
    ScriptedServer proxy(replyWith(kOk));
    const QByteArray address = "http://" + proxy.authority().toLatin1();
    for (const char* name :
         {"http_proxy", "HTTP_PROXY", "all_proxy", "ALL_PROXY", "https_proxy", "HTTPS_PROXY"}) {
        setenv(name, address.constData(), 1);
    }
    unsetenv("no_proxy");
    unsetenv("NO_PROXY");
    LoopbackSessions sessions;
    const auto session = sessions.make(HttpLimits{Seconds(20), Seconds(25)});
    ScriptedServer server(replyWith(kOk));
    EXPECT_EQ(outcomeOf(session->get(server.url())).status(), 200);
    EXPECT_EQ(outcomeOf(session->post(server.url())).status(), 200);
    EXPECT_EQ(server.requests(), 2);
    EXPECT_EQ(proxy.connections(), 0);
    for (const char* name :
         {"http_proxy", "HTTP_PROXY", "all_proxy", "ALL_PROXY", "https_proxy", "HTTPS_PROXY"}) {
        unsetenv(name);
    }
}

} // namespace
} // namespace orvanta
