// SPDX-License-Identifier: MIT
// restart_loop PROGRAM: starts PROGRAM again one second after each of its ends. The least that
// anything which waits that second can do.

#include <csignal>
#include <cstdlib>
#include <ctime>
#include <sys/wait.h>
#include <unistd.h>

int main(int argc, char** argv) {
    if (argc != 2) {
        return 2;
    }
    ::signal(SIGTERM, [](int) { std::_Exit(0); });
    while (true) {
        const pid_t child = ::fork();
        if (child == 0) {
            ::execv(argv[1], argv + 1);
            ::_exit(127);
        }
        int status = 0;
        ::waitpid(child, &status, 0);
        const timespec delay{1, 0};
        ::nanosleep(&delay, nullptr);
    }
}
