// SPDX-License-Identifier: MIT
#include "fakes/fake_serial_queues.h"

#include "base/platform_error.h"

namespace orvanta::fakes {

void FakeConnection::receive(std::size_t maximum, std::function<void(QByteArray)> onReceived) {
    receiveMaximum = maximum;
    ++receiveCount;
    onReceived(m_request.left(static_cast<qsizetype>(maximum)));
}

void FakeConnection::send(QByteArray bytes, std::function<void()> onProcessed) {
    sent += bytes;
    onProcessed();
}

class FakeSerialQueues::Queue : public SerialQueue {
public:
    explicit Queue(FakeSerialQueues& owner) : m_owner(owner) {}

    std::shared_ptr<TcpListener> listen(Reach reach, NewConnectionHandler onConnection) override {
        if (m_owner.refusal) {
            throw PlatformError(QStringLiteral("fake"), 98, *m_owner.refusal);
        }
        auto listener = std::make_shared<FakeListener>();
        listener->assignedPort = m_owner.nextPort;
        listener->reach = reach;
        listener->onConnection = std::move(onConnection);
        m_owner.listeners.push_back(listener);
        return listener;
    }

private:
    FakeSerialQueues& m_owner;
};

std::shared_ptr<SerialQueue> FakeSerialQueues::makeSerialQueue(const QString& label) {
    labels.append(label);
    return std::make_shared<Queue>(*this);
}

std::shared_ptr<FakeConnection> FakeSerialQueues::connect(const QByteArray& request) {
    auto connection = std::make_shared<FakeConnection>(request);
    listeners.back()->onConnection(connection);
    return connection;
}

} // namespace orvanta::fakes
