// SPDX-License-Identifier: MIT
#include "integration/http/loopback_test.h"

#include <sys/socket.h>

namespace orvanta {
namespace {

using LoopbackFailure = LoopbackTest;

constexpr qint64 kMebibyte = 1024 * 1024;

/// Both methods must fail on `reply`; gives the code of the failure, or 0 if either is content.
int codeOfCutReply(HttpSession& session, const QByteArray& reply) {
    ScriptedServer server(replyAndClose(reply));
    const auto get = outcomeOf(session.get(server.url()));
    const auto post = outcomeOf(session.post(server.url()));
    EXPECT_EQ(get.code(), post.code()) << reply.toStdString();
    EXPECT_EQ(server.requests(), 2) << reply.toStdString();
    return get.code();
}

TEST_F(LoopbackFailure, RefusedConnectionFailsAtOnceWithAReason) {
    QString url;
    QString authority;
    {
        ScriptedServer server(replyWith(kOk));
        url = server.url();
        authority = server.authority();
    }
    const auto outcome = outcomeOf(m_session->post(url));
    ASSERT_TRUE(outcome.error);
    EXPECT_EQ(outcome.error->domain(), QStringLiteral("http"));
    EXPECT_EQ(outcome.code(), 7);
    EXPECT_EQ(outcome.description().toStdString(), "The server at " + authority.toStdString() +
                                                       " could not be reached: Connection "
                                                       "refused.");
    EXPECT_LT(outcome.seconds, 1);
}

TEST_F(LoopbackFailure, UnusableAddressesFail) {
    for (const char* address : {"http://127.0.0.1:0/api", "http://127.0.0.1:99999/api",
                                "http://127.0.0.1:-1/api", "file:///etc/hostname", "", "http://"}) {
        const auto outcome = outcomeOf(m_session->get(QString::fromLatin1(address)));
        EXPECT_TRUE(outcome.error) << address;
        EXPECT_LT(outcome.seconds, 1) << address;
        EXPECT_TRUE(outcomeOf(m_session->post(QString::fromLatin1(address))).error) << address;
    }
}

TEST_F(LoopbackFailure, ReplyCutShortFails) {
    EXPECT_EQ(codeOfCutReply(*m_session, "HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\npart"), 18);
    EXPECT_EQ(codeOfCutReply(*m_session, "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n"
                                         "3\r\nabc\r\n"),
              18);
    EXPECT_NE(codeOfCutReply(*m_session, "HTTP/1.1 200 OK\r\nContent-Le"), 0);
    EXPECT_NE(codeOfCutReply(*m_session, "HTTP/1.1 200 OK\r\nServer: x\r\n"), 0);
    EXPECT_NE(codeOfCutReply(*m_session, "HTTP/1.1 200 OK\r\n"), 0);
    EXPECT_NE(codeOfCutReply(*m_session, "HTTP/1.1 200"), 0);
    EXPECT_NE(codeOfCutReply(*m_session, "HTTP/1.1 100 Continue\r\n\r\n"), 0);
    EXPECT_NE(codeOfCutReply(*m_session, "HTTP/1.1 101 Switching Protocols\r\n\r\n"), 0);
    EXPECT_NE(codeOfCutReply(*m_session, "HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 200 OK\r\n"), 0);
}

TEST_F(LoopbackFailure, ConnectionResetAmidTheBodyFails) {
    ScriptedServer server([](QTcpSocket& peer) {
        peer.write("HTTP/1.1 200 OK\r\n\r\npart");
        peer.flush();
        const linger reset{1, 0};
        setsockopt(static_cast<int>(peer.socketDescriptor()), SOL_SOCKET, SO_LINGER, &reset,
                   sizeof(reset));
        peer.abort();
    });
    EXPECT_EQ(outcomeOf(m_session->get(server.url())).code(), 56);
    EXPECT_EQ(outcomeOf(m_session->post(server.url())).code(), 56);
    EXPECT_EQ(server.requests(), 2);
}

TEST_F(LoopbackFailure, ReplyThatIsNotHttpFailsWithoutWaitingForMore) {
    for (const char* reply : {"SSH-2.0-OpenSSH_9.2\r\n", "no HTTP reply at all\r\n\r\n",
                              "HTTP/1.1 abc OK\r\n\r\n", "HTTP/1.1\r\n\r\n", "{\"a\":1}"}) {
        ScriptedServer server(replyWith(reply));
        const auto outcome = outcomeOf(m_session->get(server.url()));
        EXPECT_TRUE(outcome.error) << reply;
        EXPECT_LT(outcome.seconds, 1) << reply;
        EXPECT_TRUE(outcomeOf(m_session->post(server.url())).error) << reply;
        EXPECT_EQ(server.requests(), 2) << reply;
    }
}

TEST_F(LoopbackFailure, OtherSchemesAreNotTried) {
    ScriptedServer server(replyWith(kOk));
    for (const char* scheme : {"https", "ftp", "gopher", "dict", "telnet"}) {
        const auto url = QStringLiteral("%1://%2/").arg(QLatin1String(scheme), server.authority());
        EXPECT_EQ(outcomeOf(m_session->get(url)).code(), 1) << scheme;
    }
    spinFor(std::chrono::milliseconds(50));
    EXPECT_EQ(server.connections(), 0);
}

TEST_F(LoopbackFailure, BodyOfExactly16MiBIsKept) {
    qint64 sent = 0;
    ScriptedServer server(
        replyAndPour("HTTP/1.1 200 OK\r\nContent-Length: 16777216\r\n\r\n", 16 * kMebibyte, sent));
    const auto outcome = outcomeOf(m_session->get(server.url()));
    EXPECT_EQ(outcome.status(), 200);
    EXPECT_EQ(outcome.reply.value().body.size(), 16 * kMebibyte);
}

TEST_F(LoopbackFailure, LargerBodyFailsAndIsNotReadOn) {
    qint64 sent = 0;
    ScriptedServer server(replyAndPour("HTTP/1.1 200 OK\r\n\r\n", 1024 * kMebibyte, sent));
    const auto outcome = outcomeOf(m_session->get(server.url()));
    EXPECT_EQ(outcome.code(), 63);
    EXPECT_EQ(outcome.description(),
              QStringLiteral("The reply of the server at %1 is larger than 16 MiB.")
                  .arg(server.authority()));
    // What the system's socket buffers hold comes on top.
    EXPECT_LT(sent, 32 * kMebibyte);
}

TEST_F(LoopbackFailure, BodyOneByteTooLargeFails) {
    qint64 sent = 0;
    ScriptedServer server(replyAndPour("HTTP/1.1 200 OK\r\nContent-Length: 16777217\r\n\r\n",
                                       16 * kMebibyte + 1, sent));
    EXPECT_EQ(outcomeOf(m_session->get(server.url())).code(), 63);
}

TEST_F(LoopbackFailure, PostReadsAndDropsABodyOfAnySize) {
    qint64 sent = 0;
    ScriptedServer server(
        replyAndPour("HTTP/1.1 200 OK\r\nContent-Length: 33554432\r\n\r\n", 32 * kMebibyte, sent));
    const auto outcome = outcomeOf(m_session->post(server.url()));
    EXPECT_EQ(outcome.status(), 200);
    EXPECT_TRUE(outcome.reply.value().body.isEmpty());
    EXPECT_GT(sent, 32 * kMebibyte);
}

TEST_F(LoopbackFailure, EndlessHeadersFail) {
    qint64 sent = 0;
    ScriptedServer server(replyAndPour("HTTP/1.1 200 OK\r\nX: ", 1024 * kMebibyte, sent));
    EXPECT_TRUE(outcomeOf(m_session->get(server.url())).error);
    EXPECT_LT(sent, 32 * kMebibyte);
}

} // namespace
} // namespace orvanta
