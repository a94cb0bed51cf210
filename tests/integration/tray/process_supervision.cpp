// SPDX-License-Identifier: MIT
#include "integration/tray/process_supervision.h"

#include <fstream>
#include <poll.h>
#include <string>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace orvanta::tests {
namespace {

constexpr int kLookIntervalMs = 20;

int holdRequestsForProcesses() {
    HeldCalls calls;
#ifdef SYS_fork
    calls.add(SYS_fork);
    calls.add(SYS_vfork);
#endif
    calls.add(SYS_clone);
    calls.add(SYS_clone3);
    return calls.install();
}

/// The process that a thread belongs to; 0 when it is gone.
pid_t processOf(std::uint32_t thread) {
    std::ifstream file("/proc/" + std::to_string(thread) + "/status");
    std::string word;
    while (file >> word) {
        if (word == "Tgid:") {
            pid_t process = 0;
            file >> process;
            return process;
        }
    }
    return 0;
}

} // namespace

ProcessSupervision::~ProcessSupervision() {
    m_isOver = true;
    if (m_thread.joinable()) {
        m_thread.join();
    }
}

void ProcessSupervision::prepare(QProcess& program) {
    program.setChildProcessModifier([socket = m_channel.sender.get()] {
        const int listener = holdRequestsForProcesses();
        sendDescriptor(socket, listener);
    });
}

bool ProcessSupervision::begin(QProcess& program) {
    program.setChildProcessModifier({}); // the next start is another's
    m_channel.sender.reset();
    m_listener = receiveDescriptor(m_channel.receiver.get());
    if (!m_listener.isOpen()) {
        return false;
    }
    m_thread = std::thread([this, pid = static_cast<pid_t>(program.processId())] { run(pid); });
    return true;
}

void ProcessSupervision::run(pid_t program) {
    while (!m_isOver) {
        pollfd waiting{m_listener.get(), POLLIN, 0};
        if (::poll(&waiting, 1, kLookIntervalMs) > 0 && (waiting.revents & POLLIN) != 0) {
            judgeNext(program);
        }
    }
}

void ProcessSupervision::judgeNext(pid_t program) {
    seccomp_notif call{};
    if (::ioctl(m_listener.get(), SECCOMP_IOCTL_NOTIF_RECV, &call) != 0) {
        return; // who made it is gone
    }
    answerHeldCall(m_listener.get(), call.id, processOf(call.pid) == program ? verdict() : 0);
}

int ProcessSupervision::verdict() {
    const int error = m_error;
    if (error == 0 || m_granted > 0) {
        m_granted -= error != 0 ? 1 : 0;
        return 0;
    }
    ++m_refusals;
    return error;
}

} // namespace orvanta::tests
