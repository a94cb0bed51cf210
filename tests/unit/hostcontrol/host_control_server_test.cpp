// SPDX-License-Identifier: MIT
#include "hostcontrol/host_control_server.h"

#include "base/platform_error.h"
#include "fakes/fake_world.h"
#include "hostcontrol/control_request.h"

#include <gtest/gtest.h>

namespace orvanta {
namespace {

const QByteArray kRequest = "POST /restart HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n";

class HostControlServerTest : public ::testing::Test {
protected:
    std::function<void()> counting() {
        return [this] { ++m_restarts; };
    }

    fakes::FakeWorld m_world;
    std::shared_ptr<HostControlServer> m_server =
        std::make_shared<HostControlServer>(m_world.platform);
    int m_restarts = 0;
};

TEST_F(HostControlServerTest, MakesOneQueueAndNoListener) {
    EXPECT_EQ(m_world.serialQueues.labels,
              QStringList{QStringLiteral("com.orvanta.macos.host-control")});
    EXPECT_TRUE(m_world.serialQueues.listeners.empty());
    EXPECT_EQ(m_server->restartURL(), std::nullopt);
}

TEST_F(HostControlServerTest, AddressHasThePortOfTheListener) {
    m_server->start(counting());
    EXPECT_EQ(m_server->restartURL(), QUrl(QStringLiteral("http://127.0.0.1:54321/restart")));
}

TEST_F(HostControlServerTest, ListensOnEveryInterfaceUnlessToldOtherwise) {
    const auto reachWith = [](const std::optional<QByteArray>& value) {
        fakes::FakeWorld world;
        if (value) {
            world.environment.values.set("ORVANTA_HOST_CONTROL_LOOPBACK_ONLY", *value);
        }
        const auto server = std::make_shared<HostControlServer>(world.platform);
        server->start([] {});
        return world.serialQueues.listeners.at(0)->reach;
    };
    EXPECT_EQ(reachWith("1"), Reach::loopback);
    for (const auto& other : {std::optional<QByteArray>(), {""}, {"0"}, {"true"}, {"11"}}) {
        EXPECT_EQ(reachWith(other), Reach::everyInterface);
    }
}

TEST_F(HostControlServerTest, NoAddressBeforeThePortIsKnown) {
    m_world.serialQueues.nextPort = std::nullopt;
    m_server->start(counting());
    EXPECT_EQ(m_server->restartURL(), std::nullopt);
    m_world.serialQueues.listeners[0]->assignedPort = 1;
    EXPECT_EQ(m_server->restartURL(), QUrl(QStringLiteral("http://127.0.0.1:1/restart")));
}

TEST_F(HostControlServerTest, StopCancelsTheListenerAndForgetsIt) {
    m_server->stop();
    m_server->start(counting());
    m_server->stop();
    m_server->stop();
    EXPECT_EQ(m_world.serialQueues.listeners[0]->cancelCount, 1);
    EXPECT_EQ(m_server->restartURL(), std::nullopt);
}

TEST_F(HostControlServerTest, AnswersAnAcceptedRequestAndCallsTheHandlerLater) {
    m_server->start(counting());
    const auto connection = m_world.serialQueues.connect(kRequest);
    EXPECT_EQ(connection->receiveMaximum, 16384U);
    EXPECT_EQ(connection->receiveCount, 1);
    EXPECT_EQ(connection->sent, controlReply(true));
    EXPECT_EQ(connection->cancelCount, 1);
    EXPECT_EQ(m_restarts, 0);
    m_world.queue.runUntilIdle();
    EXPECT_EQ(m_restarts, 1);
}

TEST_F(HostControlServerTest, CallsTheHandlerOncePerAcceptedRequest) {
    m_server->start(counting());
    for (int i = 0; i < 3; ++i) {
        m_world.serialQueues.connect(kRequest);
    }
    m_world.queue.runUntilIdle();
    EXPECT_EQ(m_restarts, 3);
}

TEST_F(HostControlServerTest, AnswersARejectedRequestAndCallsNothing) {
    m_server->start(counting());
    for (const QByteArray& request : {QByteArray("GET /restart HTTP/1.1\r\n\r\n"), QByteArray()}) {
        const auto connection = m_world.serialQueues.connect(request);
        EXPECT_EQ(connection->receiveCount, 1);
        EXPECT_EQ(connection->sent, controlReply(false));
        EXPECT_EQ(connection->cancelCount, 1);
    }
    m_world.queue.runUntilIdle();
    EXPECT_EQ(m_restarts, 0);
}

TEST_F(HostControlServerTest, CancelsTheConnectionOnlyWhenTheReplyHasBeenSent) {
    struct SlowConnection : fakes::FakeConnection {
        using FakeConnection::FakeConnection;
        void send(QByteArray bytes, std::function<void()> onProcessed) override {
            sent = bytes;
            processed = std::move(onProcessed);
        }
        std::function<void()> processed;
    };
    m_server->start(counting());
    const auto connection = std::make_shared<SlowConnection>(kRequest);
    m_world.serialQueues.listeners[0]->onConnection(connection);
    m_world.queue.runUntilIdle();
    EXPECT_EQ(m_restarts, 1) << "the handler does not wait for the reply";
    EXPECT_EQ(connection->cancelCount, 0);
    std::exchange(connection->processed, nullptr)();
    EXPECT_EQ(connection->cancelCount, 1);
}

TEST_F(HostControlServerTest, SecondStartReplacesTheHandlerAndLeavesTheFirstListenerAlone) {
    m_server->start([] { FAIL() << "the first handler was replaced"; });
    const auto first = m_world.serialQueues.listeners[0];
    m_world.serialQueues.nextPort = 54322;
    m_server->start(counting());
    EXPECT_EQ(first->cancelCount, 0);
    EXPECT_EQ(m_server->restartURL(), QUrl(QStringLiteral("http://127.0.0.1:54322/restart")));
    first->onConnection(std::make_shared<fakes::FakeConnection>(kRequest));
    m_world.queue.runUntilIdle();
    EXPECT_EQ(m_restarts, 1);
    m_server->stop();
    EXPECT_EQ(first->cancelCount, 0);
}

TEST_F(HostControlServerTest, FailedStartChangesTheHandlerOnly) {
    m_server->start([] { FAIL() << "the first handler was replaced"; });
    m_world.serialQueues.refusal = QStringLiteral("No port is left.");
    EXPECT_THROW(m_server->start(counting()), PlatformError);
    EXPECT_EQ(m_server->restartURL(), QUrl(QStringLiteral("http://127.0.0.1:54321/restart")));
    m_world.serialQueues.connect(kRequest);
    m_world.queue.runUntilIdle();
    EXPECT_EQ(m_restarts, 1);
}

TEST_F(HostControlServerTest, KeepsTheHandlerAfterStop) {
    m_server->start(counting());
    m_server->stop();
    m_world.serialQueues.connect(kRequest);
    m_world.queue.runUntilIdle();
    EXPECT_EQ(m_restarts, 1);
}

TEST_F(HostControlServerTest, IgnoresConnectionsWhenItIsGone) {
    m_server->start(counting());
    m_server.reset();
    const auto connection = m_world.serialQueues.connect(kRequest);
    EXPECT_EQ(connection->receiveCount, 0);
    EXPECT_EQ(connection->sent, QByteArray());
}

TEST_F(HostControlServerTest, CallsNothingWhenItGoesBeforeItsTurn) {
    m_server->start(counting());
    const auto connection = m_world.serialQueues.connect(kRequest);
    m_server.reset();
    m_world.queue.runUntilIdle();
    EXPECT_EQ(connection->sent, controlReply(true));
    EXPECT_EQ(m_restarts, 0);
}

TEST_F(HostControlServerTest, HandlerMayReplaceItselfAndDropTheServer) {
    const auto marker = std::make_shared<int>(1);
    m_server->start([this, marker] {
        m_server->start(counting());
        m_server.reset();
        m_restarts += *marker;
    });
    m_world.serialQueues.connect(kRequest);
    m_world.queue.runUntilIdle();
    EXPECT_EQ(m_restarts, 1);
    EXPECT_EQ(marker.use_count(), 1);
}

} // namespace
} // namespace orvanta
