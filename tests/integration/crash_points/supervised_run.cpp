// SPDX-License-Identifier: MIT
#include "integration/crash_points/supervised_run.h"

#include "integration/crash_points/mutating_calls.h"
#include "integration/crash_points/reading_calls.h"
#include "integration/held_calls.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace orvanta {
namespace {

constexpr std::size_t kLongestMessage = 4096;

/// What it tells is not held up: messages neither change nor read a file system.
[[noreturn]] void beSupervised(int socket, const std::function<Report()>& operation,
                               bool isForReading) {
    {
        const FileDescriptor listener(isForReading ? submitReadingCalls() : submitMutatingCalls());
        if (!listener.isOpen()) {
            ::_exit(1);
        }
        sendDescriptor(socket, listener.get());
    }
    const Report report = operation();
    const std::string message = (report.succeeded ? '+' : '-') + report.message;
    ::send(socket, message.data(), message.size(), 0);
    ::_exit(0);
}

class Supervisor {
public:
    Supervisor(pid_t process, FileDescriptor listener, const Fault& fault, const Watch& watch)
        : m_process(process), m_listener(std::move(listener)), m_fault(fault), m_watch(watch) {}

    /// Until the process and all that it has started have ended.
    SupervisedEnding run() {
        while (!haveAllEnded()) {
            // Older systems do not tell that the last process under supervision is gone.
            constexpr int kMilliseconds = 5;
            pollfd waiting{m_listener.get(), POLLIN, 0};
            if (::poll(&waiting, 1, kMilliseconds) > 0 && (waiting.revents & POLLIN) != 0) {
                judgeNext();
            }
        }
        return std::move(m_ending);
    }

private:
    static bool haveAllEnded() {
        pid_t ended = 0;
        do {
            ended = ::waitpid(-1, nullptr, WNOHANG);
        } while (ended > 0);
        return ended < 0 && errno == ECHILD;
    }

    void judgeNext() {
        seccomp_notif call{};
        if (::ioctl(m_listener.get(), SECCOMP_IOCTL_NOTIF_RECV, &call) != 0) {
            return; // its process has ended meanwhile
        }
        auto watched = watchedCall(call);
        if (!watched) {
            answerHeldCall(m_listener.get(), call.id, 0);
            return;
        }
        const int number = static_cast<int>(m_ending.calls.size()) + 1;
        watched->failed = fails(number, watched->path);
        if (m_watch.onCall) {
            m_watch.onCall(*watched);
        }
        if (number == m_fault.call && isKill()) {
            kill(static_cast<pid_t>(call.pid));
        }
        // With an answer the caller might still make the call before it dies.
        if (number != m_fault.call || m_fault.kind != Fault::Kind::killed) {
            answerHeldCall(m_listener.get(), call.id, watched->failed ? m_fault.error : 0);
        }
        m_ending.calls.push_back(std::move(*watched));
    }

    std::optional<WatchedCall> watchedCall(const seccomp_notif& call) const {
        const bool byOther = static_cast<pid_t>(call.pid) != m_process;
        if (m_watch.readingBelow.empty()) {
            return WatchedCall{.description = describe(call), .byOtherProgram = byOther};
        }
        const auto reading = readingCall(call);
        if (!reading || !(reading->path + '/').starts_with(m_watch.readingBelow + '/')) {
            return std::nullopt;
        }
        return WatchedCall{.description = std::string(reading->name) + ' ' + reading->path,
                           .path = reading->path,
                           .opens = reading->opens,
                           .byOtherProgram = byOther};
    }

    bool isKill() const {
        return m_fault.kind == Fault::Kind::killed || m_fault.kind == Fault::Kind::killedAlone;
    }

    bool fails(int number, const std::string& path) const {
        switch (m_fault.kind) {
        case Fault::Kind::failing:
            return number == m_fault.call;
        case Fault::Kind::failingFromThenOn:
            return number >= m_fault.call;
        case Fault::Kind::failingAtPath:
            return path == m_fault.path;
        default:
            return false;
        }
    }

    void kill(pid_t caller) {
        m_ending.wasKilled = true;
        ::kill(m_process, SIGKILL);
        if (m_fault.kind == Fault::Kind::killed) {
            ::kill(caller, SIGKILL);
        }
    }

    const pid_t m_process;
    const FileDescriptor m_listener;
    const Fault& m_fault;
    const Watch& m_watch;
    SupervisedEnding m_ending;
};

std::optional<Report> receiveReport(int socket) {
    std::array<char, kLongestMessage> bytes{};
    const ssize_t count = ::recv(socket, bytes.data(), bytes.size(), MSG_DONTWAIT);
    if (count <= 0) {
        return std::nullopt;
    }
    return Report{bytes[0] == '+',
                  std::string(bytes.data() + 1, static_cast<std::size_t>(count - 1))};
}

} // namespace

std::optional<SupervisedEnding> runSupervised(const std::function<Report()>& operation,
                                              const Fault& fault, const Watch& watch) {
    // A program whose parent was killed is waited for, too.
    ::prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0);
    std::fflush(nullptr);
    DescriptorChannel channel;
    const pid_t process = ::fork();
    if (process == 0) {
        beSupervised(channel.sender.get(), operation, !watch.readingBelow.empty());
    }
    channel.sender.reset();
    FileDescriptor listener = receiveDescriptor(channel.receiver.get());
    if (!listener.isOpen()) {
        ::waitpid(process, nullptr, 0);
        return std::nullopt;
    }
    SupervisedEnding ending = Supervisor(process, std::move(listener), fault, watch).run();
    ending.report = receiveReport(channel.receiver.get());
    return ending;
}

} // namespace orvanta
