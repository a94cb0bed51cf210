// SPDX-License-Identifier: MIT
#include "platform/posix/process_identity.h"

#include <array>
#include <csignal>
#include <libproc.h>
#include <sys/stat.h>

namespace orvanta {

std::optional<ProcessIdentity> identifyProcess(pid_t pid) {
    proc_bsdinfo info{};
    std::array<char, PROC_PIDPATHINFO_MAXSIZE> path{};
    struct stat executable {};
    constexpr int kSize = sizeof info;
    if (::proc_pidinfo(pid, PROC_PIDTBSDINFO, 0, &info, kSize) != kSize ||
        ::proc_pidpath(pid, path.data(), path.size()) <= 0 ||
        ::stat(path.data(), &executable) != 0) {
        return std::nullopt;
    }
    constexpr std::uint64_t kMicroseconds = 1'000'000;
    return ProcessIdentity{pid, info.pbi_start_tvsec * kMicroseconds + info.pbi_start_tvusec,
                           static_cast<std::uint64_t>(executable.st_dev), executable.st_ino};
}

/// The system shows the environment of a process in no documented way.
std::vector<ProcessIdentity> findProcesses(const ExpectedProcess&) {
    return {};
}

/// The system has no handle on processes, so the number might change hands between the look and
/// the signal, within microseconds.
void terminateProcess(const ProcessIdentity& process) {
    const auto now = identifyProcess(process.pid);
    if (now && isSameProcess(*now, process)) {
        ::kill(process.pid, SIGTERM);
    }
}

} // namespace orvanta
