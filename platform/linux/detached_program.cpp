// SPDX-License-Identifier: MIT
#include "platform/linux/detached_program.h"

#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <unistd.h>
#include <vector>

namespace orvanta {
namespace {

/// A null-terminated vector of pointers into `strings`, which must outlive it.
std::vector<char*> pointersTo(QByteArrayList& strings) {
    std::vector<char*> pointers;
    for (QByteArray& string : strings) {
        pointers.push_back(string.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

void setUp(posix_spawnattr_t& attributes) {
    ::posix_spawnattr_setflags(&attributes,
                               POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    sigset_t signals;
    sigemptyset(&signals);
    ::posix_spawnattr_setsigmask(&attributes, &signals);
    sigfillset(&signals);
    ::posix_spawnattr_setsigdefault(&attributes, &signals);
}

void setUp(posix_spawn_file_actions_t& actions) {
    ::posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDWR, 0);
    ::posix_spawn_file_actions_adddup2(&actions, STDIN_FILENO, STDOUT_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, STDIN_FILENO, STDERR_FILENO);
    ::posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1);
}

} // namespace

std::optional<pid_t> startDetached(const QByteArrayList& command,
                                   const EnvironmentVariables& variables) {
    QByteArrayList arguments = command;
    QByteArrayList assignments;
    for (const auto& [name, value] : variables.all()) {
        assignments.append(name + '=' + value);
    }
    posix_spawnattr_t attributes;
    ::posix_spawnattr_init(&attributes);
    setUp(attributes);
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    setUp(actions);

    pid_t pid = 0;
    const int refusal = ::posix_spawn(&pid, command.first().constData(), &actions, &attributes,
                                      pointersTo(arguments).data(), pointersTo(assignments).data());
    ::posix_spawn_file_actions_destroy(&actions);
    ::posix_spawnattr_destroy(&attributes);
    return refusal == 0 ? std::optional(pid) : std::nullopt;
}

} // namespace orvanta
