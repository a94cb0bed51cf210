// SPDX-License-Identifier: MIT
#include "integration/tray/resource_limit.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace orvanta::tests {
namespace {

rlim_t lowestFreeNow(const std::string& directory) {
    rlim_t number = 0;
    while (std::filesystem::is_symlink(directory + std::to_string(number))) {
        ++number;
    }
    return number;
}

uid_t ownerOf(pid_t process) {
    struct stat status {};
    EXPECT_EQ(::stat(("/proc/" + std::to_string(process)).c_str(), &status), 0);
    return status.st_uid;
}

/// By the process's owner: in a container, even root may limit only what is its own.
bool isLimited(pid_t process, __rlimit_resource resource, const struct rlimit& limit) {
    const uid_t owner = ownerOf(process);
    if (process <= 0 || owner == ::getuid()) {
        return process > 0 && ::prlimit(process, resource, &limit, nullptr) == 0;
    }
    const pid_t child = ::fork();
    if (child == 0) {
        const bool isDone = ::setresgid(owner, owner, owner) == 0 &&
                            ::setresuid(owner, owner, owner) == 0 &&
                            ::prlimit(process, resource, &limit, nullptr) == 0;
        ::_exit(isDone ? 0 : 1);
    }
    int status = 1;
    return ::waitpid(child, &status, 0) == child && status == 0;
}

} // namespace

LoweredLimit::LoweredLimit(pid_t process, __rlimit_resource resource, rlim_t limit)
    : m_process(process), m_resource(resource) {
    EXPECT_GT(m_process, 0) << "which would stand for this process";
    EXPECT_EQ(::prlimit(::getpid(), m_resource, nullptr, &m_before), 0);
    struct rlimit lowered = m_before;
    lowered.rlim_cur = limit;
    EXPECT_TRUE(isLimited(m_process, m_resource, lowered));
}

LoweredLimit::~LoweredLimit() {
    EXPECT_TRUE(isLimited(m_process, m_resource, m_before));
}

rlim_t lowestFreeDescriptor(pid_t process) {
    constexpr int kLooks = 200;
    const std::string directory = "/proc/" + std::to_string(process) + "/fd/";
    rlim_t lowest = RLIM_INFINITY;
    for (int look = 0; look < kLooks; ++look) {
        lowest = std::min(lowest, lowestFreeNow(directory));
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return lowest;
}

long processorTimeMs(pid_t process) {
    constexpr int kFieldsBefore = 11;
    std::ifstream file("/proc/" + std::to_string(process) + "/stat");
    std::string text;
    std::getline(file, text, '\0');
    std::istringstream fields(text.substr(text.rfind(')') + 1));
    std::string skipped;
    for (int field = 0; field < kFieldsBefore; ++field) {
        fields >> skipped;
    }
    long user = 0;
    long system = 0;
    fields >> user >> system;
    return (user + system) * 1000 / ::sysconf(_SC_CLK_TCK);
}

} // namespace orvanta::tests
