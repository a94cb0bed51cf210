// SPDX-License-Identifier: MIT
#pragma once

#include "platform/posix/file_descriptor.h"

#include <QSocketNotifier>

#include <csignal>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace orvanta {

/// Signals as events of the main loop. At most one watch at a time in a process.
///
/// Destroying it gives the signals back to whoever had them before.
class SignalWatch {
public:
    /// `onSignal` gets the number, on the main thread and on a turn of the loop of its own.
    /// Signals that arrive in a burst may be reported once. Throws `PlatformError` when the system
    /// refuses. Needs a QCoreApplication.
    explicit SignalWatch(std::function<void(int)> onSignal);
    ~SignalWatch();
    SignalWatch(const SignalWatch&) = delete;
    SignalWatch& operator=(const SignalWatch&) = delete;

    /// Takes `signal`, also when this process was started with it ignored or blocked.
    void watch(int signal);

    /// Takes `signal` unless it is ignored, as nohup has SIGHUP.
    void watchUnlessIgnored(int signal);

private:
    void report();

    std::function<void(int)> m_onSignal;
    FileDescriptor m_readEnd;
    FileDescriptor m_writeEnd;
    std::unique_ptr<QSocketNotifier> m_notifier;
    std::vector<std::pair<int, struct sigaction>> m_before;
};

} // namespace orvanta
