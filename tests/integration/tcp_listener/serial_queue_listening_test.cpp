// SPDX-License-Identifier: MIT
#include "integration/tcp_listener/serial_queue_test.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <thread>

namespace orvanta {
namespace {

class SerialQueueListening : public SerialQueueTest {};

TEST_F(SerialQueueListening, IsReachedAtEveryAddressOfTheMachine) {
    const auto port = listen(answer);
    const auto addresses = addressesOfThisMachine();
    EXPECT_TRUE(std::any_of(addresses.begin(), addresses.end(),
                            [](const auto& a) { return describe(a) == "127.0.0.1"; }));
    for (const auto& address : addresses) {
        TcpClient client(address, port);
        ASSERT_EQ(client.connectError(), 0) << describe(address);
        EXPECT_EQ(client.send("x"), 0);
        EXPECT_EQ(client.receiveToEnd().bytes, kReply) << describe(address);
    }
}

TEST_F(SerialQueueListening, OnLoopbackIsReachedAtNoOtherAddress) {
    const auto port = listen(answer, Reach::loopback);
    for (const auto& address : addressesOfThisMachine()) {
        const bool isLoopback = describe(address) == "127.0.0.1";
        EXPECT_EQ(TcpClient(address, port).connectError(), isLoopback ? 0 : ECONNREFUSED)
            << describe(address);
    }
}

TEST_F(SerialQueueListening, RunsEverythingOnOneThreadOfItsOwn) {
    Event<std::vector<std::thread::id>> ended;
    const auto threads = std::make_shared<std::vector<std::thread::id>>();
    const auto note = [threads] { threads->push_back(std::this_thread::get_id()); };
    const auto end = endingTheQueue();
    const auto port = listen([&ended, threads, note](const auto& connection) {
        note();
        connection->receive(10, [&ended, threads, note, connection](const QByteArray&) {
            note();
            connection->send(kReply, [&ended, threads, note, connection] {
                note();
                ended.happen(*threads);
            });
        });
    });
    TcpClient client(port);
    client.send("x");
    const auto seen = ended.wait();
    ASSERT_EQ(seen.size(), 3U);
    EXPECT_NE(seen[0], std::this_thread::get_id());
    EXPECT_EQ(seen[1], seen[0]);
    EXPECT_EQ(seen[2], seen[0]);
}

TEST_F(SerialQueueListening, DescriptorsNeitherBlockNorReachChildren) {
    const auto before = openDescriptors();
    Event<std::shared_ptr<TcpConnection>> accepted;
    const auto end = endingTheQueue();
    const auto port = listen([&accepted](const auto& connection) { accepted.happen(connection); });
    const TcpClient client(port);
    const auto connection = accepted.wait();
    // Listener, connection, and the two ends of the pipe that wakes the thread.
    int own = 0;
    for (const int descriptor : openDescriptors()) {
        const bool isClient = (::fcntl(descriptor, F_GETFL) & O_NONBLOCK) == 0;
        if (before.count(descriptor) == 0 && !isClient) {
            EXPECT_EQ(::fcntl(descriptor, F_GETFD) & FD_CLOEXEC, FD_CLOEXEC) << descriptor;
            ++own;
        }
    }
    EXPECT_EQ(own, 4);
}

TEST_F(SerialQueueListening, CancelRefusesAtOnceHoweverBusyTheQueueIs) {
    Event<bool> isBusy;
    Event<bool> mayGoOn;
    const auto end = endingTheQueue();
    const auto port = listen([&](const auto&) {
        isBusy.happen(true);
        mayGoOn.wait();
    });
    const TcpClient first(port);
    isBusy.wait();
    m_listener->cancel();
    EXPECT_EQ(TcpClient(port).connectError(), ECONNREFUSED);
    EXPECT_EQ(m_listener->port(), std::nullopt);
    mayGoOn.happen(true);
}

TEST_F(SerialQueueListening, CancelRefusesAtOnceWhenTheQueueWaits) {
    for (int i = 0; i < 200; ++i) {
        const auto port = listen(answer);
        ASSERT_EQ(TcpClient(port).connectError(), 0);
        m_listener->cancel();
        ASSERT_EQ(TcpClient(port).connectError(), ECONNREFUSED) << i;
        m_listener->cancel();
    }
    EXPECT_TRUE(waitUntil([&] { return descriptorCount() <= m_descriptorsBefore + 2; }));
}

TEST_F(SerialQueueListening, CancelLeavesAcceptedConnectionsAlone) {
    Event<bool> isAccepted;
    const auto end = endingTheQueue();
    const auto port = listen([&](const auto& connection) {
        answer(connection);
        isAccepted.happen(true);
    });
    TcpClient client(port);
    isAccepted.wait();
    m_listener->cancel();
    client.send("x");
    const auto received = client.receiveToEnd();
    EXPECT_EQ(received.bytes, kReply);
    EXPECT_EQ(received.error, 0);
}

TEST_F(SerialQueueListening, ADroppedListenerStillListens) {
    const auto first = listen(answer);
    const auto second = listen(answer);
    m_listener.reset();
    EXPECT_NE(first, second);
    for (const auto port : {first, second}) {
        TcpClient client(port);
        client.send("x");
        EXPECT_EQ(client.receiveToEnd().bytes, kReply);
    }
}

TEST_F(SerialQueueListening, AConnectionThatNobodyKeepsIsClosed) {
    const auto port = listen([](const auto&) {});
    const auto received = TcpClient(port).receiveToEnd();
    EXPECT_EQ(received.bytes, QByteArray());
    EXPECT_EQ(received.error, 0);
}

} // namespace
} // namespace orvanta
