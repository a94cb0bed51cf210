// SPDX-License-Identifier: MIT
#include "integration/tcp_listener/serial_queue_test.h"

#include <ctime>

namespace orvanta {
namespace {

class SerialQueueTransfer : public SerialQueueTest {
protected:
    /// Listens, and reports what the one receive of the first connection brings.
    std::uint16_t listenFor(Event<QByteArray>& received, std::size_t maximum = 16384) {
        return listen([&received, maximum](const auto& connection) {
            connection->receive(maximum,
                                [&received](const QByteArray& bytes) { received.happen(bytes); });
        });
    }
};

TEST_F(SerialQueueTransfer, ReceivesTheFirstBytesWithoutWaitingForMore) {
    Event<QByteArray> received;
    const auto end = endingTheQueue();
    TcpClient client(listenFor(received));
    client.send("POST /rest");
    EXPECT_EQ(received.wait(), "POST /rest");
}

TEST_F(SerialQueueTransfer, ReceivesNoMoreThanTheMaximum) {
    Event<QByteArray> received;
    const auto end = endingTheQueue();
    TcpClient client(listenFor(received, 4));
    client.send("123456789");
    EXPECT_EQ(received.wait(), "1234");
}

TEST_F(SerialQueueTransfer, ReceivesNothingWhenThePeerCloses) {
    Event<QByteArray> received;
    const auto end = endingTheQueue();
    TcpClient client(listenFor(received));
    client.close();
    EXPECT_EQ(received.wait(), QByteArray());
}

TEST_F(SerialQueueTransfer, ReceivesNothingWhenThePeerResets) {
    Event<QByteArray> received;
    const auto end = endingTheQueue();
    TcpClient client(listenFor(received));
    client.reset();
    EXPECT_EQ(received.wait(), QByteArray());
}

TEST_F(SerialQueueTransfer, ReceivesNothingAfterCancel) {
    Event<QByteArray> pending;
    Event<QByteArray> late;
    const auto end = endingTheQueue();
    const auto port = listen([&](const auto& connection) {
        connection->receive(10, [&](const QByteArray& bytes) { pending.happen(bytes); });
        connection->cancel();
        connection->receive(10, [&](const QByteArray& bytes) { late.happen(bytes); });
    });
    TcpClient client(port);
    EXPECT_EQ(pending.wait(), QByteArray());
    EXPECT_EQ(late.wait(), QByteArray());
    EXPECT_EQ(client.receiveToEnd().error, 0);
}

TEST_F(SerialQueueTransfer, AReplyToAPeerThatHasGoneIsProcessedAndRaisesNoSignal) {
    Event<bool> processed;
    const auto end = endingTheQueue();
    const auto port = listen([&](const auto& connection) {
        connection->receive(10, [&, connection](const QByteArray&) {
            connection->send(kReply, [&, connection] {
                connection->send(kReply, [&, connection] { processed.happen(true); });
            });
        });
    });
    TcpClient(port).reset();
    EXPECT_TRUE(processed.wait());
    EXPECT_TRUE(waitUntil([&] { return descriptorCount() == m_descriptorsBefore + 3; }));
}

TEST_F(SerialQueueTransfer, MuchMoreThanTheSystemTakesAtOnceArrivesWhole) {
    QByteArray much(32 * 1024 * 1024, Qt::Uninitialized);
    for (qsizetype i = 0; i < much.size(); ++i) {
        much[i] = static_cast<char>(i * 31 >> 5);
    }
    std::atomic<bool> isProcessed = false;
    const auto end = endingTheQueue();
    const auto port = listen([&](const auto& connection) {
        connection->receive(10, [&, connection](const QByteArray&) {
            connection->send(much, [&] { isProcessed = true; });
            connection->send("and the rest", [connection] { connection->cancel(); });
        });
    });
    TcpClient client(port);
    client.send("x");
    EXPECT_EQ(client.receive(1).bytes.size(), 1);
    EXPECT_FALSE(isProcessed);
    const auto received = client.receiveToEnd();
    EXPECT_TRUE(isProcessed);
    EXPECT_EQ(received.error, 0);
    EXPECT_TRUE(received.bytes == much.mid(1) + "and the rest");
}

TEST_F(SerialQueueTransfer, AKeptConnectionWhosePeerHasGoneCostsNoTime) {
    Event<std::shared_ptr<TcpConnection>> accepted;
    const auto end = endingTheQueue();
    const auto port = listen([&](const auto& connection) { accepted.happen(connection); });
    TcpClient client(port);
    const auto connection = accepted.wait();
    client.reset();
    const std::clock_t before = std::clock();
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    EXPECT_LT(std::clock() - before, CLOCKS_PER_SEC / 10);
}

} // namespace
} // namespace orvanta
