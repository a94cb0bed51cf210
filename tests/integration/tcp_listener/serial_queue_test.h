// SPDX-License-Identifier: MIT
#pragma once

#include "integration/open_descriptors.h"
#include "integration/run_loop.h"
#include "integration/tcp_listener/tcp_client.h"
#include "platform/posix/serial_queue.h"

#include <gtest/gtest.h>

#include <QScopeGuard>

#include <atomic>
#include <future>
#include <memory>

namespace orvanta {

inline const QByteArray kReply = "what was asked for";

/// Something that happens once on another thread.
template <typename T>
class Event {
public:
    void happen(T value) { m_promise.set_value(std::move(value)); }
    bool hasHappened() {
        return m_future.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
    }
    /// Waits for it, and throws when it does not come.
    T wait() {
        if (m_future.wait_for(kPatience) != std::future_status::ready) {
            throw std::runtime_error("what the test waited for did not happen");
        }
        return m_future.get();
    }

private:
    std::promise<T> m_promise;
    std::future<T> m_future = m_promise.get_future();
};

class SerialQueueTest : public ::testing::Test {
protected:
    std::uint16_t listen(NewConnectionHandler onConnection, Reach reach = Reach::everyInterface) {
        m_listener = m_queue->listen(reach, std::move(onConnection));
        return m_listener->port().value();
    }

    /// To be kept in a variable declared after all that callbacks refer to.
    auto endingTheQueue() {
        return qScopeGuard([this] { m_queue.reset(); });
    }

    /// Waits for up to 16 KiB from each peer, replies `kReply` and closes.
    static void answer(const std::shared_ptr<TcpConnection>& connection) {
        connection->receive(16384, [connection](const QByteArray&) {
            connection->send(kReply, [connection] { connection->cancel(); });
        });
    }

    int m_descriptorsBefore = descriptorCount();
    PosixSerialQueueFactory m_factory;
    std::shared_ptr<SerialQueue> m_queue =
        m_factory.makeSerialQueue(QStringLiteral("com.example.test"));
    std::shared_ptr<TcpListener> m_listener;
};

} // namespace orvanta
