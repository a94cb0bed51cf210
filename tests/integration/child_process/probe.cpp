// SPDX-License-Identifier: MIT

// A child for the tests: it tells what it was born with, or behaves in one particular way.

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

extern "C" char** environ;

namespace {

sigset_t catchableSignals() {
    sigset_t signals;
    sigfillset(&signals);
    for (const int fault : {SIGILL, SIGTRAP, SIGBUS, SIGFPE, SIGSEGV}) {
        sigdelset(&signals, fault);
    }
    return signals;
}

void reportSignals() {
    sigset_t blocked;
    sigprocmask(SIG_BLOCK, nullptr, &blocked);
    for (int number = 1; number < 32; ++number) {
        struct sigaction action {};
        sigaction(number, nullptr, &action);
        if (sigismember(&blocked, number) == 1) {
            std::printf("blocked %d\n", number);
        }
        if (action.sa_handler == SIG_IGN) {
            std::printf("ignored %d\n", number);
        }
    }
}

void reportDescriptors() {
    for (int descriptor = 0; descriptor < 4096; ++descriptor) {
        const int flags = fcntl(descriptor, F_GETFL);
        if (flags >= 0) {
            std::printf("open %d%s\n", descriptor, (flags & O_NONBLOCK) != 0 ? " nonblocking" : "");
        }
    }
    struct stat input {
    }, null{}, output{}, error{};
    fstat(STDIN_FILENO, &input);
    stat("/dev/null", &null);
    fstat(STDOUT_FILENO, &output);
    fstat(STDERR_FILENO, &error);
    std::printf("input %s\n", input.st_rdev == null.st_rdev ? "null" : "other");
    std::printf("output %s\n", S_ISFIFO(output.st_mode) ? "pipe" : "other");
    std::printf("error %s\n", S_ISFIFO(error.st_mode) ? "pipe" : "other");
    std::printf("streams %s\n", output.st_ino == error.st_ino ? "shared" : "separate");
}

int report(int argc, char** argv) {
    char directory[4096];
    std::printf("directory %s\n", getcwd(directory, sizeof directory));
    std::printf("group %s\n", getpgrp() == getpid() ? "own" : "foreign");
    for (int i = 0; i < argc; ++i) {
        std::printf("argument %s\n", argv[i]);
    }
    reportSignals();
    reportDescriptors();
    for (char** entry = environ; *entry != nullptr; ++entry) {
        std::printf("variable %s\n", *entry);
    }
    return 0;
}

void announce() {
    std::printf("pid %d\n", static_cast<int>(getpid()));
    std::fflush(stdout);
}

/// Writes "abc...w" over and over, `total` bytes in pieces of `piece`.
int writePattern(std::size_t piece, std::size_t total) {
    constexpr std::size_t kPeriod = 23;
    std::string pattern;
    while (pattern.size() < piece + kPeriod) {
        pattern += "abcdefghijklmnopqrstuvw";
    }
    for (std::size_t written = 0; written < total;) {
        const std::size_t want = std::min(piece, total - written);
        const ssize_t count = write(STDOUT_FILENO, pattern.data() + written % kPeriod, want);
        if (count < 0) {
            return 1;
        }
        written += static_cast<std::size_t>(count);
    }
    return 0;
}

/// Catches every signal; at SIGUSR1 it writes the numbers of those before it to `path` and exits.
int recordSignals(const char* path) {
    const sigset_t signals = catchableSignals();
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    announce();
    std::string caught = "caught:";
    int number = 0;
    while (sigwait(&signals, &number) == 0 && number != SIGUSR1) {
        caught += ' ' + std::to_string(number);
    }
    // Complete from the moment it is there.
    const std::string draft = std::string(path) + ".draft";
    std::FILE* file = std::fopen(draft.c_str(), "w");
    std::fputs(caught.c_str(), file);
    std::fclose(file);
    return std::rename(draft.c_str(), path);
}

volatile std::sig_atomic_t caughtTerms = 0;
void countTerm(int) {
    caughtTerms = caughtTerms + 1;
}

/// From the first SIGTERM on it counts them for `milliseconds`, tells, and exits with 5.
int lingerAfterTerm(long milliseconds) {
    struct sigaction action {};
    action.sa_handler = countTerm;
    sigaction(SIGTERM, &action, nullptr);
    announce();
    while (caughtTerms == 0) {
        usleep(1000);
    }
    timespec rest{milliseconds / 1000, (milliseconds % 1000) * 1000000};
    while (nanosleep(&rest, &rest) != 0 && errno == EINTR) {
    }
    std::printf("terms %d\n", static_cast<int>(caughtTerms));
    return 5;
}

/// Ends both streams and lives on.
int closeOutput() {
    announce();
    close(STDOUT_FILENO);
    close(STDERR_FILENO);
    for (;;) {
        pause();
    }
}

} // namespace

int main(int argc, char** argv) {
    const std::string mode = argc > 1 ? argv[1] : "";
    if (mode == "report") {
        return report(argc, argv);
    }
    if (mode == "write" && argc == 4) {
        return writePattern(std::strtoull(argv[2], nullptr, 10),
                            std::strtoull(argv[3], nullptr, 10));
    }
    if (mode == "record-signals" && argc == 3) {
        return recordSignals(argv[2]);
    }
    if (mode == "linger" && argc == 3) {
        return lingerAfterTerm(std::strtol(argv[2], nullptr, 10));
    }
    if (mode == "close-output") {
        return closeOutput();
    }
    return 64;
}
