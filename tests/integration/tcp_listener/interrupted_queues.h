// SPDX-License-Identifier: MIT
#pragma once

#include "platform/posix/serial_queue.h"

#include <functional>
#include <memory>
#include <utility>

namespace orvanta {

/// Real queues that run something on their thread before each connection is handled.
class InterruptedQueues : public SerialQueueFactory {
public:
    explicit InterruptedQueues(std::function<void()> interruption)
        : m_interruption(std::move(interruption)) {}

    std::shared_ptr<SerialQueue> makeSerialQueue(const QString& label) override {
        return std::make_shared<Queue>(m_real.makeSerialQueue(label), m_interruption);
    }

private:
    class Queue : public SerialQueue {
    public:
        Queue(std::shared_ptr<SerialQueue> real, std::function<void()> interruption)
            : m_real(std::move(real)), m_interruption(std::move(interruption)) {}

        std::shared_ptr<TcpListener> listen(Reach reach,
                                            NewConnectionHandler onConnection) override {
            return m_real->listen(
                reach, [interruption = m_interruption, onConnection](const auto& connection) {
                    interruption();
                    onConnection(connection);
                });
        }

    private:
        std::shared_ptr<SerialQueue> m_real;
        std::function<void()> m_interruption;
    };

    PosixSerialQueueFactory m_real;
    std::function<void()> m_interruption;
};

} // namespace orvanta
