// SPDX-License-Identifier: MIT
#include "integration/tray/launch_watch.h"

#include <poll.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>

namespace orvanta::tests {
namespace {

constexpr int kLookIntervalMs = 20;

int holdLaunches() {
    HeldCalls calls;
    calls.add(SYS_execve);
    return calls.install();
}

} // namespace

LaunchWatch::~LaunchWatch() {
    m_isOver = true;
    m_channel.sender.reset();
    if (m_thread.joinable()) {
        m_thread.join();
    }
}

void LaunchWatch::prepare(QProcess& program) {
    program.setChildProcessModifier(
        [socket = m_channel.sender.get()] { sendDescriptor(socket, holdLaunches()); });
    // Its own launch is held up, too, and `start` does not come back before that is over.
    m_thread = std::thread([this] { run(); });
}

bool LaunchWatch::begin(QProcess& program) {
    program.setChildProcessModifier({}); // the next start is another's
    m_channel.sender.reset();
    return m_isWatching;
}

void LaunchWatch::run() {
    const FileDescriptor listener = receiveDescriptor(m_channel.receiver.get());
    m_isWatching = listener.isOpen();
    while (m_isWatching && !m_isOver) {
        pollfd waiting{listener.get(), POLLIN, 0};
        if (::poll(&waiting, 1, kLookIntervalMs) > 0 && (waiting.revents & POLLIN) != 0) {
            showNext(listener.get());
        }
    }
}

void LaunchWatch::showNext(int listener) const {
    seccomp_notif call{};
    if (::ioctl(listener, SECCOMP_IOCTL_NOTIF_RECV, &call) != 0) {
        return; // who made it is gone
    }
    m_onLaunch(textAt(static_cast<pid_t>(call.pid), call.data.args[0]));
    answerHeldCall(listener, call.id, 0);
}

} // namespace orvanta::tests
