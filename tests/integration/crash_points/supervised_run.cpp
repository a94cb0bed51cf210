// SPDX-License-Identifier: MIT
#include "integration/crash_points/supervised_run.h"

#include "integration/crash_points/mutating_calls.h"
#include "platform/posix/file_descriptor.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace orvanta {
namespace {

constexpr std::size_t kLongestMessage = 4096;

/// Messages of either side stay apart; none of the calls used here changes a file system.
struct Channel {
    Channel() {
        int ends[2] = {-1, -1};
        ::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends);
        supervisor = FileDescriptor(ends[0]);
        process = FileDescriptor(ends[1]);
    }
    FileDescriptor supervisor;
    FileDescriptor process;
};

union DescriptorSpace {
    cmsghdr header;
    char bytes[CMSG_SPACE(sizeof(int))];
};

void sendDescriptor(int socket, int descriptor) {
    char letter = 'd';
    iovec text{&letter, 1};
    DescriptorSpace space{};
    msghdr message{};
    message.msg_iov = &text;
    message.msg_iovlen = 1;
    message.msg_control = space.bytes;
    message.msg_controllen = sizeof space.bytes;
    cmsghdr* const header = CMSG_FIRSTHDR(&message);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(sizeof descriptor);
    std::memcpy(CMSG_DATA(header), &descriptor, sizeof descriptor);
    ::sendmsg(socket, &message, 0);
}

FileDescriptor receiveDescriptor(int socket) {
    char letter = 0;
    iovec text{&letter, 1};
    DescriptorSpace space{};
    msghdr message{};
    message.msg_iov = &text;
    message.msg_iovlen = 1;
    message.msg_control = space.bytes;
    message.msg_controllen = sizeof space.bytes;
    const ssize_t count = ::recvmsg(socket, &message, MSG_CMSG_CLOEXEC);
    const cmsghdr* const header = count > 0 ? CMSG_FIRSTHDR(&message) : nullptr;
    int descriptor = -1;
    if (header != nullptr) {
        std::memcpy(&descriptor, CMSG_DATA(header), sizeof descriptor);
    }
    return FileDescriptor(descriptor);
}

[[noreturn]] void beSupervised(int socket, const std::function<Report()>& operation) {
    {
        const FileDescriptor listener(submitMutatingCalls());
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
    Supervisor(pid_t process, FileDescriptor listener, const Fault& fault)
        : m_process(process), m_listener(std::move(listener)), m_fault(fault) {}

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
        const bool byOther = static_cast<pid_t>(call.pid) != m_process;
        m_ending.calls.push_back({describe(call), byOther});
        const int number = static_cast<int>(m_ending.calls.size());
        if (number == m_fault.call && isKill()) {
            kill(static_cast<pid_t>(call.pid));
        }
        // With an answer the caller might still make the call before it dies.
        if (number != m_fault.call || m_fault.kind != Fault::Kind::killed) {
            answer(call.id, fails(number) ? m_fault.error : 0);
        }
    }

    bool isKill() const {
        return m_fault.kind == Fault::Kind::killed || m_fault.kind == Fault::Kind::killedAlone;
    }

    bool fails(int number) const {
        return (number == m_fault.call && m_fault.kind == Fault::Kind::failing) ||
               (number >= m_fault.call && m_fault.kind == Fault::Kind::failingFromThenOn);
    }

    void kill(pid_t caller) {
        m_ending.wasKilled = true;
        ::kill(m_process, SIGKILL);
        if (m_fault.kind == Fault::Kind::killed) {
            ::kill(caller, SIGKILL);
        }
    }

    void answer(std::uint64_t id, int error) const {
        seccomp_notif_resp response{};
        response.id = id;
        response.error = -error;
        response.flags = error == 0 ? SECCOMP_USER_NOTIF_FLAG_CONTINUE : 0;
        ::ioctl(m_listener.get(), SECCOMP_IOCTL_NOTIF_SEND, &response);
    }

    const pid_t m_process;
    const FileDescriptor m_listener;
    const Fault m_fault;
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
                                              const Fault& fault) {
    // A program whose parent was killed is waited for, too.
    ::prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0);
    std::fflush(nullptr);
    Channel channel;
    const pid_t process = ::fork();
    if (process == 0) {
        beSupervised(channel.process.get(), operation);
    }
    channel.process.reset();
    FileDescriptor listener = receiveDescriptor(channel.supervisor.get());
    if (!listener.isOpen()) {
        ::waitpid(process, nullptr, 0);
        return std::nullopt;
    }
    SupervisedEnding ending = Supervisor(process, std::move(listener), fault).run();
    ending.report = receiveReport(channel.supervisor.get());
    return ending;
}

} // namespace orvanta
