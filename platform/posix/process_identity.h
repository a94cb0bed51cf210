// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

#include <cstdint>
#include <optional>
#include <sys/types.h>
#include <vector>

namespace orvanta {

/// Tells a process from every other one that had or will have the same number.
struct ProcessIdentity {
    pid_t pid = 0;
    std::uint64_t startTime = 0; ///< in a unit of the system's own
    std::uint64_t device = 0;    ///< of the executable that it runs
    std::uint64_t inode = 0;     ///< of the executable that it runs; 0 stands for any

    bool operator==(const ProcessIdentity&) const = default;
};

/// What is known of a process before it has a number.
struct ExpectedProcess {
    std::uint64_t device = 0;     ///< of its executable
    std::uint64_t inode = 0;      ///< of its executable
    QByteArray environmentDigest; ///< of all its variables, as `digestOfEnvironment` makes it
};

/// `block`: "NAME=value" of each variable in order, each with a NUL after it.
QByteArray digestOfEnvironment(const QByteArray& block);

/// The processes that run this executable and were started with exactly this environment. Empty
/// where the system does not tell. Found in platform/linux or platform/macos.
std::vector<ProcessIdentity> findProcesses(const ExpectedProcess& expected);

/// The process that has this number now. Nothing when there is none, it has exited or cannot be
/// looked at. Found in platform/linux or platform/macos.
std::optional<ProcessIdentity> identifyProcess(pid_t pid);

/// Whether `now`, as it was found, is the process that was remembered.
bool isSameProcess(const ProcessIdentity& now, const ProcessIdentity& remembered);

/// Sends SIGTERM, if the process still runs. One that only has the same number gets nothing.
/// Found in platform/linux or platform/macos.
void terminateProcess(const ProcessIdentity& process);

} // namespace orvanta
