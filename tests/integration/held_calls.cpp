// SPDX-License-Identifier: MIT
#include "integration/held_calls.h"

#include <array>
#include <cstddef>
#include <cstring>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

namespace orvanta {
namespace {

/// One letter, with room for a descriptor that goes along.
struct DescriptorMessage {
    char letter = 'd';
    iovec text{&letter, 1};
    alignas(cmsghdr) char space[CMSG_SPACE(sizeof(int))] = {};
    msghdr message{};

    DescriptorMessage() {
        message.msg_iov = &text;
        message.msg_iovlen = 1;
        message.msg_control = space;
        message.msg_controllen = sizeof space;
    }
    DescriptorMessage(const DescriptorMessage&) = delete;
    DescriptorMessage& operator=(const DescriptorMessage&) = delete;
};

} // namespace

void HeldCalls::loadCallNumber() {
    step(BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)));
}

void HeldCalls::add(unsigned number) {
    loadCallNumber();
    step(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, number, 0, 1));
    step(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_USER_NOTIF));
}

void HeldCalls::addIf(unsigned number, int argument, std::uint16_t comparison,
                      std::uint32_t value) {
    const auto offset = offsetof(seccomp_data, args) + sizeof(std::uint64_t) * argument;
    loadCallNumber();
    step(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, number, 0, 3));
    step(BPF_STMT(BPF_LD | BPF_W | BPF_ABS, static_cast<std::uint32_t>(offset)));
    step(BPF_JUMP(static_cast<std::uint16_t>(BPF_JMP | comparison | BPF_K), value, 0, 1));
    step(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_USER_NOTIF));
}

int HeldCalls::install() {
    step(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
    const sock_fprog program{static_cast<std::uint16_t>(m_steps.size()), m_steps.data()};
    if (::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0) {
        return -1;
    }
    return static_cast<int>(::syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER,
                                      SECCOMP_FILTER_FLAG_NEW_LISTENER, &program));
}

void answerHeldCall(int listener, std::uint64_t id, int error) {
    seccomp_notif_resp response{};
    response.id = id;
    response.error = -error;
    response.flags = error == 0 ? SECCOMP_USER_NOTIF_FLAG_CONTINUE : 0;
    ::ioctl(listener, SECCOMP_IOCTL_NOTIF_SEND, &response);
}

std::string textAt(pid_t process, std::uint64_t address) {
    constexpr std::uint64_t kPage = 4096;
    std::array<char, kPage> bytes{};
    const iovec local{bytes.data(), bytes.size() - 1};
    // What follows the text may not be there, so each page is asked for separately.
    const std::uint64_t inPage = kPage - address % kPage;
    const std::array<iovec, 2> remote{{
        {reinterpret_cast<void*>(address), inPage},
        {reinterpret_cast<void*>(address + inPage), kPage - inPage},
    }};
    if (::process_vm_readv(process, &local, 1, remote.data(), remote.size(), 0) <= 0) {
        return "(unreadable)";
    }
    return bytes.data();
}

DescriptorChannel::DescriptorChannel() {
    int ends[2] = {-1, -1};
    ::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends);
    receiver = FileDescriptor(ends[0]);
    sender = FileDescriptor(ends[1]);
}

void sendDescriptor(int socket, int descriptor) {
    DescriptorMessage parcel;
    cmsghdr* const header = CMSG_FIRSTHDR(&parcel.message);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(sizeof descriptor);
    std::memcpy(CMSG_DATA(header), &descriptor, sizeof descriptor);
    ::sendmsg(socket, &parcel.message, 0);
}

FileDescriptor receiveDescriptor(int socket) {
    DescriptorMessage parcel;
    const ssize_t count = ::recvmsg(socket, &parcel.message, MSG_CMSG_CLOEXEC);
    const cmsghdr* const header = count > 0 ? CMSG_FIRSTHDR(&parcel.message) : nullptr;
    int descriptor = -1;
    if (header != nullptr) {
        std::memcpy(&descriptor, CMSG_DATA(header), sizeof descriptor);
    }
    return FileDescriptor(descriptor);
}

} // namespace orvanta
