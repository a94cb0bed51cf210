// SPDX-License-Identifier: MIT
#include "hostcontrol/host_control_server.h"

#include "fakes/fake_world.h"
#include "integration/run_loop.h"
#include "integration/tcp_listener/interrupted_queues.h"
#include "integration/tcp_listener/tcp_client.h"
#include "platform/posix/serial_queue.h"
#include "platform/qt/main_queue.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <thread>

namespace orvanta {
namespace {

const QByteArray kAccepted = "HTTP/1.1 202 Accepted\r\nContent-Type: application/json\r\n"
                             "Content-Length: 17\r\nConnection: close\r\n\r\n{\"accepted\":true}";
const QByteArray kRejected = "HTTP/1.1 404 Not Found\r\nContent-Type: application/json\r\n"
                             "Content-Length: 18\r\nConnection: close\r\n\r\n{\"accepted\":false}";
const QByteArray kRequest = "POST /restart HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n";

Platform withRealSockets(MainQueue& mainQueue, SerialQueueFactory& serialQueues,
                         const Platform& others) {
    return {mainQueue,
            others.childProcesses,
            others.httpSessions,
            serialQueues,
            others.files,
            others.locations,
            others.environment,
            others.wallClock,
            others.loginItem,
            others.browser,
            others.application,
            others.standardOutput,
            others.backgroundWork,
            others.archiveTool,
            others.identifiers,
            others.contentDigest};
}

/// The real server on real sockets; the rest of the world is not asked for anything.
class HostControlTest : public ::testing::Test {
protected:
    std::uint16_t start() {
        m_server->start([this] {
            ++m_restarts;
            m_strangers += std::this_thread::get_id() != m_mainThread;
        });
        return port();
    }

    std::uint16_t port() const {
        return static_cast<std::uint16_t>(m_server->restartURL().value().port());
    }

    static QByteArray replyTo(std::uint16_t port, const QByteArray& request) {
        TcpClient client(port);
        EXPECT_EQ(client.send(request), 0);
        const auto received = client.receiveToEnd();
        EXPECT_EQ(received.error, 0) << request.left(80).toStdString();
        return received.bytes;
    }

    /// What has been posted to the main thread so far has run.
    void settle() {
        bool isSettled = false;
        m_queue.post([&isSettled] { isSettled = true; });
        EXPECT_TRUE(turnLoopUntil([&] { return isSettled; }));
    }

    /// The reply may be here before the handler's call has been posted.
    void expectRestarts(int count) {
        EXPECT_TRUE(turnLoopUntil([&] { return m_restarts >= count; }));
        settle();
        EXPECT_EQ(m_restarts, count);
    }

    QtMainQueue m_queue;
    PosixSerialQueueFactory m_serialQueues;
    fakes::FakeWorld m_world;
    Platform m_platform = withRealSockets(m_queue, m_serialQueues, m_world.platform);
    std::shared_ptr<HostControlServer> m_server = std::make_shared<HostControlServer>(m_platform);
    const std::thread::id m_mainThread = std::this_thread::get_id();
    int m_restarts = 0;
    int m_strangers = 0;
};

TEST_F(HostControlTest, AcceptsARestartAndCallsTheHandlerOnTheMainThread) {
    const auto port = start();
    EXPECT_EQ(m_server->restartURL(),
              QUrl(QStringLiteral("http://127.0.0.1:%1/restart").arg(port)));
    EXPECT_EQ(replyTo(port, kRequest), kAccepted);
    EXPECT_EQ(m_restarts, 0);
    expectRestarts(1);
    EXPECT_EQ(replyTo(port, kRequest), kAccepted);
    EXPECT_EQ(replyTo(port, kRequest), kAccepted);
    expectRestarts(3);
    EXPECT_EQ(m_strangers, 0);
}

TEST_F(HostControlTest, RejectsEverythingElseAndCallsNothing) {
    const auto port = start();
    for (const QByteArray& request :
         {QByteArray("GET /restart HTTP/1.1\r\n\r\n"), QByteArray("post /restart HTTP/1.1\r\n\r\n"),
          QByteArray("POST /restart\r\n\r\n"), QByteArray("POST /restart?a=b HTTP/1.1\r\n\r\n"),
          QByteArray("POST /restart/x HTTP/1.1\r\n\r\n"), QByteArray("\n"),
          QByteArray("POST /restart HTTP/1.1\r\nX: \xFF\r\n\r\n"),
          QByteArray("\x16\x03\x01\x02\x00\x01\x00", 7)}) {
        EXPECT_EQ(replyTo(port, request), kRejected) << request.toStdString();
    }
    settle();
    EXPECT_EQ(m_restarts, 0);
}

TEST_F(HostControlTest, RejectsARequestWhoseFirstPieceIsTooShort) {
    TcpClient client(start());
    client.send(kRequest.left(13));
    // The reply comes although the request has not ended.
    EXPECT_EQ(client.receive(kRejected.size()).bytes, kRejected);
    client.send(kRequest.mid(13));
    EXPECT_EQ(client.receiveToEnd().error, 0);
    settle();
    EXPECT_EQ(m_restarts, 0);
}

TEST_F(HostControlTest, AcceptsARequestWhoseFirstPieceIsJustLongEnough) {
    TcpClient client(start());
    client.send(kRequest.left(14));
    EXPECT_EQ(client.receive(kAccepted.size()).bytes, kAccepted);
    client.send(kRequest.mid(14));
    EXPECT_EQ(client.receiveToEnd().error, 0);
    expectRestarts(1);
}

TEST_F(HostControlTest, AnswersAPeerThatSaysNothingAndStopsTalking) {
    TcpClient client(start());
    client.finishSending();
    const auto received = client.receiveToEnd();
    EXPECT_EQ(received.bytes, kRejected);
    EXPECT_EQ(received.error, 0);
    settle();
    EXPECT_EQ(m_restarts, 0);
}

TEST_F(HostControlTest, SurvivesPeersThatGoWithoutReadingTheReply) {
    const auto port = start();
    for (int i = 0; i < 50; ++i) {
        TcpClient(port).close();
        TcpClient(port).reset();
        TcpClient hasty(port);
        hasty.send(kRequest);
        hasty.reset();
    }
    EXPECT_EQ(replyTo(port, kRequest), kAccepted);
}

TEST_F(HostControlTest, CallsTheHandlerThoughThePeerHasGone) {
    TcpClient client(start());
    client.send(kRequest);
    client.close();
    EXPECT_TRUE(turnLoopUntil([&] { return m_restarts == 1; }));
}

TEST_F(HostControlTest, AnswersALongRequestReadably) {
    const auto port = start();
    const QByteArray request = kRequest.chopped(2) + "X: ";
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(replyTo(port, request + QByteArray(20000 - request.size(), 'x')), kAccepted);
    }
    expectRestarts(20);
}

TEST_F(HostControlTest, StopRefusesConnections) {
    const auto port = start();
    m_server->stop();
    EXPECT_EQ(m_server->restartURL(), std::nullopt);
    EXPECT_EQ(TcpClient(port).connectError(), ECONNREFUSED);
    EXPECT_NE(start(), 0);
    EXPECT_EQ(replyTo(this->port(), kRequest), kAccepted);
}

TEST_F(HostControlTest, AnswersOpenConnectionsAfterStop) {
    TcpClient early(start());
    // A second one answered tells that the first one is accepted.
    EXPECT_EQ(replyTo(port(), kRequest), kAccepted);
    m_server->stop();
    early.send(kRequest);
    EXPECT_EQ(early.receiveToEnd().bytes, kAccepted);
    expectRestarts(2);
}

TEST_F(HostControlTest, ASecondStartLeavesTheFirstListenerListening) {
    const auto first = start();
    const auto second = start();
    EXPECT_NE(first, second);
    EXPECT_EQ(replyTo(first, kRequest), kAccepted);
    EXPECT_EQ(replyTo(second, kRequest), kAccepted);
    expectRestarts(2);
    m_server->stop();
    EXPECT_EQ(replyTo(first, kRequest), kAccepted);
}

TEST_F(HostControlTest, IsReachedAtEveryAddressOfTheMachine) {
    const auto port = start();
    for (const auto& address : addressesOfThisMachine()) {
        TcpClient client(address, port);
        client.send(kRequest);
        EXPECT_EQ(client.receiveToEnd().bytes, kAccepted) << describe(address);
    }
}

TEST_F(HostControlTest, HearsARequestBeyondHundredsOfSilentPeers) {
    const auto port = start();
    std::vector<std::unique_ptr<TcpClient>> silent;
    for (int i = 0; i < 300; ++i) {
        silent.push_back(std::make_unique<TcpClient>(port));
    }
    EXPECT_EQ(replyTo(port, kRequest), kAccepted);
    EXPECT_EQ(silent[0]->receiveToEnd().bytes, kRejected);
    expectRestarts(1);
}

TEST_F(HostControlTest, ManyPeersAtOnceAreEachAnswered) {
    const auto port = start();
    std::vector<std::thread> peers;
    for (int i = 0; i < 4; ++i) {
        peers.emplace_back([port] {
            for (int request = 0; request < 100; ++request) {
                EXPECT_EQ(replyTo(port, kRequest), kAccepted);
            }
        });
    }
    EXPECT_TRUE(turnLoopUntil([&] { return m_restarts == 400; }));
    for (auto& peer : peers) {
        peer.join();
    }
    EXPECT_EQ(m_restarts, 400);
    EXPECT_EQ(m_strangers, 0);
}

TEST_F(HostControlTest, EndsWithItsLastReference) {
    const auto port = start();
    TcpClient silent(port);
    EXPECT_EQ(replyTo(port, kRequest), kAccepted);
    m_server.reset();
    EXPECT_EQ(TcpClient(port).connectError(), ECONNREFUSED);
    EXPECT_EQ(silent.receiveToEnd().bytes, QByteArray());
    settle();
    EXPECT_EQ(m_restarts, 0);
}

TEST_F(HostControlTest, MayLoseItsLastReferenceOnItsQueue) {
    std::atomic<bool> isDropped = false;
    InterruptedQueues queues([&] {
        m_server.reset();
        isDropped = true;
    });
    Platform platform = withRealSockets(m_queue, queues, m_world.platform);
    m_server = std::make_shared<HostControlServer>(platform);
    const auto port = start();
    TcpClient client(port);
    client.send(kRequest);
    EXPECT_EQ(client.receiveToEnd().bytes, QByteArray());
    EXPECT_TRUE(isDropped);
    EXPECT_TRUE(waitUntil([&] { return TcpClient(port).connectError() == ECONNREFUSED; }));
    settle();
    EXPECT_EQ(m_restarts, 0);
}

} // namespace
} // namespace orvanta
