// SPDX-License-Identifier: MIT
#pragma once

#include "integration/held_calls.h"

#include <QProcess>

#include <atomic>
#include <functional>
#include <string>
#include <thread>

namespace orvanta::tests {

/// Sees each program that a process and its children become, at the moment they do: the kernel
/// holds the call up until whoever watches has looked around. The programs themselves are
/// unchanged.
class LaunchWatch {
public:
    /// `onLaunch` gets the path of the program, on a thread of its own.
    explicit LaunchWatch(std::function<void(const std::string&)> onLaunch)
        : m_onLaunch(std::move(onLaunch)) {}
    /// What is watched launches nothing any more from now on.
    ~LaunchWatch();
    LaunchWatch(const LaunchWatch&) = delete;
    LaunchWatch& operator=(const LaunchWatch&) = delete;

    /// To be called before `program` is started.
    void prepare(QProcess& program);
    /// To be called when it has been started; false where the system cannot hold calls up.
    bool begin(QProcess& program);

private:
    void run();
    void showNext(int listener) const;

    const std::function<void(const std::string&)> m_onLaunch;
    DescriptorChannel m_channel;
    std::thread m_thread;
    std::atomic<bool> m_isWatching = false;
    std::atomic<bool> m_isOver = false;
};

} // namespace orvanta::tests
