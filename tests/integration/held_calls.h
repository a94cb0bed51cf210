// SPDX-License-Identifier: MIT
#pragma once

#include "platform/posix/file_descriptor.h"

#include <linux/filter.h>
#include <linux/seccomp.h>

#include <cstdint>
#include <string>
#include <sys/types.h>
#include <vector>

namespace orvanta {

/// Which system calls are held up until somebody has given a verdict on them. Linux only.
class HeldCalls {
public:
    void add(unsigned number);
    /// If `comparison` of that argument, of which 32 bits count, with `value` holds; one of the
    /// kernel's BPF_J constants.
    void addIf(unsigned number, int argument, std::uint16_t comparison, std::uint32_t value);

    /// From now on they are held up in this process, in those it starts and in the program that it
    /// becomes. The descriptor returned, which is closed in that program, is where they wait; -1
    /// where the system does not offer that. Once nobody has it any more, they fail with ENOSYS.
    int install();

private:
    void step(sock_filter step) { m_steps.push_back(step); }
    void loadCallNumber();

    std::vector<sock_filter> m_steps;
};

/// The verdict on a call that was received from `listener`: it fails with `error`, or is made if
/// that is 0.
void answerHeldCall(int listener, std::uint64_t id, int error);

/// The text that another process, whose call is held up, has at this address of its memory;
/// "(unreadable)" when it cannot be had.
std::string textAt(pid_t process, std::uint64_t address);

/// Two ends for `sendDescriptor` and `receiveDescriptor`; messages on them stay apart.
struct DescriptorChannel {
    DescriptorChannel();
    FileDescriptor receiver;
    FileDescriptor sender;
};

/// May be called between fork and exec.
void sendDescriptor(int socket, int descriptor);
/// Waits for it; closed if the other end is gone.
FileDescriptor receiveDescriptor(int socket);

} // namespace orvanta
