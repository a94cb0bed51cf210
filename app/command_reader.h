// SPDX-License-Identifier: MIT
#pragma once

#include "app/terminal_commands.h"
#include "platform/main_queue.h"
#include "platform/posix/file_descriptor.h"

#include <QSocketNotifier>

#include <functional>
#include <memory>

namespace orvanta {

/// Reads lines from a descriptor that other processes may share, be it a terminal, a pipe or a
/// file, without ever blocking or stopping this process. While another job owns the terminal it
/// looks again each second. The end of the input or an error ends the reading for good.
///
/// Main thread only; one piece of at most 4 KiB per turn of the loop. Not to be destroyed from
/// within `onLine`.
class CommandReader {
public:
    /// `descriptor` stays the caller's; `queue` outlives this object.
    CommandReader(int descriptor, MainQueue& queue,
                  std::function<void(const LineSplitter::Line&)> onLine);
    CommandReader(const CommandReader&) = delete;
    CommandReader& operator=(const CommandReader&) = delete;

private:
    enum class Outcome { read, nothingThere, ended };

    int source() const { return m_own.isOpen() ? m_own.get() : m_shared; }
    void readWhenReady();
    void readAgainSoon();
    void readOnce();
    Outcome readPiece();
    void waitForForeground();
    void report(const std::vector<LineSplitter::Line>& lines);

    int m_shared;
    FileDescriptor m_own; ///< the same file, opened once more so that it can be non-blocking
    MainQueue& m_queue;
    std::function<void(const LineSplitter::Line&)> m_onLine;
    LineSplitter m_splitter;
    std::unique_ptr<QSocketNotifier> m_notifier; ///< for what can be waited for
    std::shared_ptr<CommandReader*> m_self;      ///< what is posted holds it weakly
};

} // namespace orvanta
