// SPDX-License-Identifier: MIT
#include "integration/tcp_listener/serial_queue_test.h"

#include <QElapsedTimer>

namespace orvanta {
namespace {

constexpr int kMebibyte = 1024 * 1024;

class SerialQueueClosing : public SerialQueueTest {};

TEST_F(SerialQueueClosing, AReplyIsReadableThoughMuchOfTheRequestWasNot) {
    const auto port = listen(answer);
    for (const int size : {20000, 100000, kMebibyte - 20000}) {
        for (int i = 0; i < 20; ++i) {
            TcpClient client(port);
            EXPECT_EQ(client.send(QByteArray(size, 'x')), 0) << size;
            const auto received = client.receiveToEnd();
            EXPECT_EQ(received.bytes, kReply) << size;
            EXPECT_EQ(received.error, 0) << size;
        }
    }
}

TEST_F(SerialQueueClosing, ClosesWhenThePeerHas) {
    const auto port = listen(answer);
    QElapsedTimer clock;
    clock.start();
    for (int i = 0; i < 20; ++i) {
        TcpClient client(port);
        client.send("x");
        client.receiveToEnd();
    }
    // Pipe and listener remain.
    EXPECT_TRUE(waitUntil([&] { return descriptorCount() == m_descriptorsBefore + 3; }));
    EXPECT_LT(clock.elapsed(), 900);
}

TEST_F(SerialQueueClosing, ClosesAfterASecondThoughThePeerStays) {
    const auto port = listen(answer);
    TcpClient client(port);
    client.send("x");
    QElapsedTimer clock;
    clock.start();
    EXPECT_EQ(client.receiveToEnd().bytes, kReply);
    // Pipe, listener and client remain.
    EXPECT_TRUE(waitUntil([&] { return descriptorCount() == m_descriptorsBefore + 4; }));
    EXPECT_GT(clock.elapsed(), 900);
    EXPECT_LT(clock.elapsed(), 5000);
}

TEST_F(SerialQueueClosing, ClosesAfterASecondThoughThePeerDoesNotRead) {
    const auto port = listen([](const auto& connection) {
        connection->send(QByteArray(32 * kMebibyte, 'x'), [] {});
        connection->cancel();
    });
    const TcpClient client(port);
    EXPECT_TRUE(waitUntil([&] { return descriptorCount() == m_descriptorsBefore + 5; }));
    EXPECT_TRUE(waitUntil([&] { return descriptorCount() == m_descriptorsBefore + 4; }));
}

TEST_F(SerialQueueClosing, WhatWasSentBeforeStillArrivesAndThenTheEnd) {
    // A sanitizer slows both ends down, and what has not gone out after a second never does.
    constexpr int kSize = (ORVANTA_SANITIZED ? 8 : 16) * kMebibyte;
    constexpr qint64 kLimitMs = ORVANTA_SANITIZED ? 5'000 : 900;
    const auto port = listen([](const auto& connection) {
        connection->send(QByteArray(kSize, 'x'), [] {});
        connection->send("the rest", [] {});
        connection->cancel();
    });
    TcpClient client(port);
    QElapsedTimer clock;
    clock.start();
    const auto received = client.receiveToEnd();
    EXPECT_EQ(received.error, 0);
    EXPECT_EQ(received.bytes.size(), kSize + 8);
    EXPECT_TRUE(received.bytes.endsWith("xthe rest"));
    EXPECT_LT(clock.elapsed(), kLimitMs);
}

TEST_F(SerialQueueClosing, ClosesOnAPeerThatNeverStopsTalking) {
    const auto port = listen(answer);
    TcpClient client(port);
    constexpr qint64 kFarTooMuch = 256LL * kMebibyte;
    const qint64 poured = client.pour(kFarTooMuch);
    // Beyond what is dropped, the system's own buffers hold some.
    EXPECT_GE(poured, kMebibyte);
    EXPECT_LT(poured, 32LL * kMebibyte);
}

} // namespace
} // namespace orvanta
