// SPDX-License-Identifier: MIT
// usage PID...: a line "PID NS SWITCHES" for each process: the nanoseconds of processor time that
// it has used, ended threads included, and how often one of its present threads has gone to sleep.

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <string>

namespace {

long long processorTime(pid_t pid) {
    clockid_t clock{};
    timespec time{};
    if (::clock_getcpuclockid(pid, &clock) != 0 || ::clock_gettime(clock, &time) != 0) {
        return -1;
    }
    return static_cast<long long>(time.tv_sec) * 1'000'000'000 + time.tv_nsec;
}

long long switchesOf(const std::filesystem::path& thread) {
    const std::string key = "voluntary_ctxt_switches:";
    std::ifstream status(thread / "status");
    std::string line;
    while (std::getline(status, line)) {
        if (line.compare(0, key.size(), key) == 0) {
            return std::atoll(line.c_str() + key.size());
        }
    }
    return 0;
}

long long switchesOf(pid_t pid) {
    long long sum = 0;
    std::error_code error;
    const std::string tasks = "/proc/" + std::to_string(pid) + "/task";
    for (const auto& thread : std::filesystem::directory_iterator(tasks, error)) {
        sum += switchesOf(thread.path());
    }
    return sum;
}

} // namespace

int main(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        const pid_t pid = std::atoi(argv[i]);
        std::printf("%d %lld %lld\n", pid, processorTime(pid), switchesOf(pid));
    }
    return 0;
}
