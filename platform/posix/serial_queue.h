// SPDX-License-Identifier: MIT
#pragma once

#include "platform/tcp_listener.h"

namespace orvanta {

/// Serial queues that are threads of their own, waiting in poll(2). The last reference to a queue
/// may be dropped on any thread, the queue's own included; on another one the drop waits for the
/// callback that is running. At most 64 connections of a queue are open at a time: at one more,
/// the one that has waited longest for its first bytes receives nothing and is closed.
class PosixSerialQueueFactory : public SerialQueueFactory {
public:
    std::shared_ptr<SerialQueue> makeSerialQueue(const QString& label) override;
};

} // namespace orvanta
