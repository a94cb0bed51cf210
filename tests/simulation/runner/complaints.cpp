// SPDX-License-Identifier: MIT
#include "simulation/runner/complaints.h"

#include <cstdio>
#include <unistd.h>

namespace orvanta::simulation {

namespace {

/// One file for all runs: it has no name and ends with the process.
int sharedFile() {
    static std::FILE* const kFile = std::tmpfile();
    return kFile != nullptr ? ::fileno(kFile) : -1;
}

} // namespace

Complaints::Complaints() : m_file(sharedFile()) {
    std::fflush(stderr);
    m_standardError = ::dup(STDERR_FILENO);
    if (m_file < 0 || ::ftruncate(m_file, 0) != 0 || ::lseek(m_file, 0, SEEK_SET) != 0 ||
        ::dup2(m_file, STDERR_FILENO) < 0) {
        std::perror("complaints cannot be listened to");
        std::_Exit(3);
    }
}

Complaints::~Complaints() {
    std::fflush(stderr);
    ::dup2(m_standardError, STDERR_FILENO);
    ::close(m_standardError);
}

std::string Complaints::heard() const {
    std::fflush(stderr);
    char bytes[4096];
    const ssize_t count = ::pread(m_file, bytes, sizeof bytes, 0);
    return count > 0 ? std::string(bytes, static_cast<std::size_t>(count)) : std::string();
}

} // namespace orvanta::simulation
