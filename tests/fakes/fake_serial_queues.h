// SPDX-License-Identifier: MIT
#pragma once

#include "platform/tcp_listener.h"

#include <QStringList>

#include <optional>
#include <vector>

namespace orvanta::fakes {

/// A connection whose request the test supplies.
class FakeConnection : public TcpConnection {
public:
    explicit FakeConnection(QByteArray request) : m_request(std::move(request)) {}

    void receive(std::size_t maximum, std::function<void(QByteArray)> onReceived) override;
    void send(QByteArray bytes, std::function<void()> onProcessed) override;
    void cancel() override { ++cancelCount; }

    std::size_t receiveMaximum = 0;
    int receiveCount = 0;
    QByteArray sent;
    int cancelCount = 0;

private:
    QByteArray m_request;
};

struct FakeListener : TcpListener {
    std::optional<std::uint16_t> port() const override { return assignedPort; }
    void cancel() override {
        assignedPort.reset();
        ++cancelCount;
    }

    std::optional<std::uint16_t> assignedPort;
    Reach reach = Reach::everyInterface;
    int cancelCount = 0;
    NewConnectionHandler onConnection;
};

/// Makes queues whose listeners get the port that the test has set. Connections are handled on
/// the thread of the test.
class FakeSerialQueues : public SerialQueueFactory {
public:
    std::shared_ptr<SerialQueue> makeSerialQueue(const QString& label) override;

    /// What a client that sends `request` sees; its connection.
    std::shared_ptr<FakeConnection> connect(const QByteArray& request);

    QStringList labels;
    std::optional<std::uint16_t> nextPort = 54321;
    /// When set, listening fails with this reason.
    std::optional<QString> refusal;
    std::vector<std::shared_ptr<FakeListener>> listeners;

private:
    class Queue;
};

} // namespace orvanta::fakes
