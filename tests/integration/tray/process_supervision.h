// SPDX-License-Identifier: MIT
#pragma once

#include "integration/held_calls.h"

#include <QProcess>

#include <atomic>
#include <thread>

namespace orvanta::tests {

/// Decides whether a program gets the processes and threads that it asks the kernel for. What it
/// has started itself gets them always. The program is the one that is run everywhere, unchanged:
/// it is the kernel that holds its calls up.
class ProcessSupervision {
public:
    ProcessSupervision() = default;
    /// The program must be gone, since its calls fail from now on.
    ~ProcessSupervision();
    ProcessSupervision(const ProcessSupervision&) = delete;
    ProcessSupervision& operator=(const ProcessSupervision&) = delete;

    /// To be called before `program` is started.
    void prepare(QProcess& program);
    /// To be called when it has been started; false where the system cannot hold calls up.
    bool begin(QProcess& program);

    /// From now on all that it asks for, but for the next `granted`, is refused with `error`;
    /// granted again if that is 0.
    void refuseWith(int error, int granted = 0) {
        m_granted = granted;
        m_error = error;
    }
    /// How often it has been refused something.
    int refusals() const { return m_refusals; }

private:
    void run(pid_t program);
    void judgeNext(pid_t program);
    int verdict();

    DescriptorChannel m_channel;
    FileDescriptor m_listener;
    std::thread m_thread;
    std::atomic<bool> m_isOver = false;
    std::atomic<int> m_error = 0;
    std::atomic<int> m_granted = 0;
    std::atomic<int> m_refusals = 0;
};

} // namespace orvanta::tests
