// SPDX-License-Identifier: MIT
#include "platform/posix/process_setup.h"

#include "platform/posix/per_system.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <initializer_list>
#include <unistd.h>

namespace orvanta {
namespace {

void openIfClosed(int descriptor) {
    if (::fcntl(descriptor, F_GETFD) == -1) {
        // The lowest free number is this one: those below are open by now.
        ::open("/dev/null", O_RDWR);
    }
}

} // namespace

void setUpProcess() {
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        openIfClosed(descriptor);
    }
    for (const int signal : {SIGPIPE, SIGTTIN, SIGTTOU}) {
        std::signal(signal, SIG_IGN);
    }
    shareOneHeap();
}

void useEnglish() {
    for (const char* name : {"LC_ALL", "LC_ADDRESS", "LC_COLLATE", "LC_IDENTIFICATION",
                             "LC_MEASUREMENT", "LC_MESSAGES", "LC_MONETARY", "LC_NAME",
                             "LC_NUMERIC", "LC_PAPER", "LC_TELEPHONE", "LC_TIME"}) {
        ::unsetenv(name);
    }
    ::setenv("LANG", "C", 1);
    // Alone, because all others of that locale would be read from files and say the same.
    ::setenv("LC_CTYPE", plainUtf8(), 1);
}

void leaveProcess(int exitStatus) {
    std::fflush(nullptr);
    std::_Exit(exitStatus);
}

} // namespace orvanta
