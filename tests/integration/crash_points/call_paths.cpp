// SPDX-License-Identifier: MIT
#include "integration/crash_points/call_paths.h"

#include "integration/held_calls.h"

#include <array>
#include <fcntl.h>
#include <unistd.h>

namespace orvanta {
namespace {

std::string linkTarget(const std::string& link) {
    std::array<char, 4096> target{};
    return ::readlink(link.c_str(), target.data(), target.size() - 1) > 0 ? target.data()
                                                                          : "(unreadable)";
}

} // namespace

std::string openFile(pid_t process, std::uint64_t descriptor) {
    return linkTarget("/proc/" + std::to_string(process) + "/fd/" +
                      std::to_string(static_cast<int>(descriptor)));
}

std::string absolutePath(pid_t process, std::uint64_t descriptor, std::uint64_t path) {
    const std::string text = path == 0 ? std::string() : textAt(process, path);
    if (text.starts_with('/')) {
        return text;
    }
    const std::string base = static_cast<int>(descriptor) == AT_FDCWD
                                 ? linkTarget("/proc/" + std::to_string(process) + "/cwd")
                                 : openFile(process, descriptor);
    return text.empty() ? base : base + '/' + text;
}

} // namespace orvanta
