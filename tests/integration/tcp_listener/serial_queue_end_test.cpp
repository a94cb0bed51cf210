// SPDX-License-Identifier: MIT
#include "integration/tcp_listener/serial_queue_test.h"

#include <cerrno>

namespace orvanta {
namespace {

class SerialQueueEnd : public SerialQueueTest {};

TEST_F(SerialQueueEnd, AQueueThatNeverListenedHasNothingToEnd) {
    m_queue.reset();
    EXPECT_EQ(descriptorCount(), m_descriptorsBefore);
}

TEST_F(SerialQueueEnd, ClosesAndDropsEverythingWithItsLastReference) {
    const auto marker = std::make_shared<int>(0);
    Event<bool> isWaiting;
    std::atomic<int> calls = 0;
    const auto port = listen([&, marker](const auto& connection) {
        connection->receive(10, [&calls, marker, connection](const QByteArray&) { ++calls; });
        isWaiting.happen(true);
    });
    TcpClient client(port);
    isWaiting.wait();
    m_queue.reset();
    EXPECT_EQ(calls, 0);
    EXPECT_EQ(m_listener->port(), std::nullopt);
    EXPECT_EQ(client.receiveToEnd().bytes, QByteArray());
    EXPECT_EQ(TcpClient(port).connectError(), ECONNREFUSED);
    m_listener->cancel();
    m_listener.reset();
    EXPECT_EQ(marker.use_count(), 1);
    client.close();
    EXPECT_EQ(descriptorCount(), m_descriptorsBefore);
}

TEST_F(SerialQueueEnd, WaitsForTheCallbackThatRuns) {
    Event<bool> hasStarted;
    std::atomic<bool> hasEnded = false;
    const auto port = listen([&](const auto&) {
        hasStarted.happen(true);
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
        hasEnded = true;
    });
    const TcpClient client(port);
    hasStarted.wait();
    m_queue.reset();
    EXPECT_TRUE(hasEnded);
}

TEST_F(SerialQueueEnd, MayEndOnItsOwnThread) {
    const auto marker = std::make_shared<int>(0);
    std::shared_ptr<SerialQueue> last;
    Event<bool> hasLast;
    std::atomic<int> calls = 0;
    const auto port = listen([&, marker](const auto& connection) {
        hasLast.wait();
        last.reset();
        // Still on the thread of the queue, which has ended all the same.
        connection->receive(10, [&calls, marker, connection](const QByteArray&) { ++calls; });
    });
    TcpClient client(port);
    client.send("x");
    last = std::move(m_queue);
    hasLast.happen(true);
    EXPECT_EQ(client.receiveToEnd().bytes, QByteArray());
    EXPECT_TRUE(waitUntil([&] { return m_listener->port() == std::nullopt; }));
    m_listener.reset();
    client.close();
    EXPECT_TRUE(waitUntil([&] { return marker.use_count() == 1; }));
    EXPECT_TRUE(waitUntil([&] { return descriptorCount() == m_descriptorsBefore; }));
    EXPECT_EQ(calls, 0);
}

TEST_F(SerialQueueEnd, EndsInTheMiddleOfTraffic) {
    for (int i = 0; i < 100; ++i) {
        m_queue = m_factory.makeSerialQueue(QStringLiteral("com.example.test"));
        const auto port = listen(answer);
        TcpClient first(port);
        first.send("x");
        TcpClient second(port);
        second.send("x");
        m_queue.reset();
        m_listener.reset();
    }
    EXPECT_EQ(descriptorCount(), m_descriptorsBefore);
}

} // namespace
} // namespace orvanta
