// SPDX-License-Identifier: MIT
#pragma once

#include "platform/posix/file_descriptor.h"

#include <QObject>
#include <QSocketNotifier>
#include <QTimer>

#include <functional>
#include <memory>

namespace orvanta {

/// Where a local socket of the bus is, in the form that bind(2) takes: a path, or an abstract name
/// after a NUL. Empty when `address` names no such socket first. Public for its tests.
QByteArray localSocketOf(const QByteArray& address);

/// Asks the session bus for a sign of life before anything waits for it: the toolkit's way to
/// connect blocks for as long as a bus takes connections and says nothing. Main thread only.
class SessionBusProbe {
public:
    /// `onAnswer` runs once, on a later turn of the loop, unless the probe is gone by then: true
    /// when the bus speaks, or when it has an address of a kind that is not looked into; false
    /// when there is none, or none has spoken within 5 seconds.
    explicit SessionBusProbe(std::function<void(bool)> onAnswer);
    SessionBusProbe(const SessionBusProbe&) = delete;
    SessionBusProbe& operator=(const SessionBusProbe&) = delete;

private:
    void answerLater(bool isAlive);
    void ask(const QByteArray& socketName);
    void listen();

    std::function<void(bool)> m_onAnswer;
    FileDescriptor m_socket;
    std::unique_ptr<QSocketNotifier> m_notifier;
    QTimer m_timer;
};

} // namespace orvanta
