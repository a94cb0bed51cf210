// SPDX-License-Identifier: MIT
#include "integration/tray/process_table.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace orvanta::tests {

namespace {

struct Stat {
    char state = '?';
    pid_t parent = 0;
};

/// The command name may hold anything, so the fields count from its last bracket. A process may be
/// gone between opening and reading; the stream's own iterators would throw then.
Stat statOf(pid_t pid) {
    std::ifstream file("/proc/" + std::to_string(pid) + "/stat");
    std::string text;
    std::getline(file, text, '\0');
    const auto bracket = text.rfind(')');
    Stat stat;
    if (bracket != std::string::npos) {
        std::istringstream fields(text.substr(bracket + 1));
        fields >> stat.state >> stat.parent;
    }
    return stat;
}

std::size_t entryCount(const std::string& directory) {
    std::error_code ignored;
    std::size_t count = 0;
    for (auto entry = std::filesystem::directory_iterator(directory, ignored);
         entry != std::filesystem::directory_iterator(); entry.increment(ignored)) {
        ++count;
    }
    return count;
}

} // namespace

std::vector<pid_t> childrenOf(pid_t parent) {
    std::vector<pid_t> children;
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
        const pid_t pid = std::atoi(entry.path().filename().c_str());
        if (pid > 0 && statOf(pid).parent == parent) {
            children.push_back(pid);
        }
    }
    return children;
}

bool isAlive(pid_t pid) {
    const char state = statOf(pid).state;
    return state != '?' && state != 'Z' && state != 'X';
}

bool isZombie(pid_t pid) {
    return statOf(pid).state == 'Z';
}

std::size_t descriptorCount(pid_t pid) {
    return entryCount("/proc/" + std::to_string(pid) + "/fd");
}

std::size_t threadCount(pid_t pid) {
    return entryCount("/proc/" + std::to_string(pid) + "/task");
}

std::size_t residentKiB(pid_t pid) {
    std::ifstream file("/proc/" + std::to_string(pid) + "/status");
    std::string word;
    while (file >> word) {
        if (word == "VmRSS:") {
            std::size_t kib = 0;
            file >> kib;
            return kib;
        }
    }
    return 0;
}

} // namespace orvanta::tests
