// SPDX-License-Identifier: MIT
#pragma once

#include "platform/posix/file_descriptor.h"

#include <QByteArray>
#include <QSocketNotifier>

#include <functional>
#include <memory>

namespace orvanta {

/// Writes to a descriptor that other processes may share, without ever blocking: what the reader
/// does not take now waits here. A reader that has gone ends the writing, silently. Main thread
/// only.
class OutputStream {
public:
    /// `descriptor` stays the caller's. `onDrained` is called from the main loop when the last
    /// waiting byte has been taken, not inside `write`.
    OutputStream(int descriptor, std::function<void()> onDrained);
    OutputStream(const OutputStream&) = delete;
    OutputStream& operator=(const OutputStream&) = delete;

    /// Nothing waits: the next bytes go out at once or wait alone. True for ever once the reader
    /// has gone.
    bool isIdle() const { return m_waiting.isEmpty(); }

    /// Callers look at `isIdle` first: what waits here has no bound of its own.
    void write(const QByteArray& bytes);

private:
    int target() const { return m_own.isOpen() ? m_own.get() : m_shared; }
    bool canTakeBytes() const;
    bool writeOnce();
    void flush();
    void setWaitingForReader(bool isWaiting);

    int m_shared;
    FileDescriptor m_own; ///< the same file, opened once more so that it can be non-blocking
    bool m_isSocket;      ///< cannot be opened again, but be written to without waiting
    std::function<void()> m_onDrained;
    QByteArray m_waiting;
    std::unique_ptr<QSocketNotifier> m_notifier;
    bool m_hasEnded = false;
};

} // namespace orvanta
