// SPDX-License-Identifier: MIT
#pragma once

#include "platform/posix/file_descriptor.h"

#include <QByteArray>
#include <QSocketNotifier>

#include <functional>

namespace orvanta {

/// Reads a pipe to its end, one piece per turn of the main loop, so that a writer who never pauses
/// cannot stop everything else. At the end of file it closes the pipe and rests.
///
/// Main thread only. Not to be destroyed from within one of its callbacks.
class PipeReader {
public:
    /// `readEnd` must be non-blocking. `onPiece` gets 1 byte to 64 KiB each time; `onEnd` is called
    /// once and last.
    PipeReader(FileDescriptor readEnd, std::function<void(QByteArray)> onPiece,
               std::function<void()> onEnd);

    bool isOpen() const { return m_readEnd.isOpen(); }

    /// Closes the pipe. Neither callback is called any more.
    void close();

private:
    void readOnce();

    FileDescriptor m_readEnd;
    std::function<void(QByteArray)> m_onPiece;
    std::function<void()> m_onEnd;
    QSocketNotifier m_notifier;
};

} // namespace orvanta
