// SPDX-License-Identifier: MIT
#include "platform/posix/silent_program.h"

#include "platform/posix/per_system.h"
#include "platform/posix/posix_error.h"
#include "platform/posix/spawn_pieces.h"

#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace orvanta {
namespace {

constexpr int kEndedBySignal = 128;

class SilentStreams {
public:
    SilentStreams() {
        ::posix_spawn_file_actions_init(&m_actions);
        for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
            ::posix_spawn_file_actions_addopen(&m_actions, stream, "/dev/null", O_RDWR, 0);
        }
    }
    SilentStreams(const SilentStreams&) = delete;
    SilentStreams& operator=(const SilentStreams&) = delete;
    ~SilentStreams() { ::posix_spawn_file_actions_destroy(&m_actions); }

    posix_spawn_file_actions_t& get() { return m_actions; }

private:
    posix_spawn_file_actions_t m_actions;
};

pid_t start(const QString& executable, const QStringList& arguments) {
    SpawnAttributes attributes(POSIX_SPAWN_SETSID);
    SilentStreams streams;
    closeAllOtherDescriptors(attributes.get(), streams.get());
    StringVector argumentVector;
    argumentVector.append(QFile::encodeName(executable));
    for (const QString& argument : arguments) {
        argumentVector.append(QFile::encodeName(argument));
    }
    StringVector environment;
    environment.append("LC_ALL=C.UTF-8");

    pid_t pid = 0;
    const int refusal =
        ::posix_spawn(&pid, QFile::encodeName(executable).constData(), &streams.get(),
                      &attributes.get(), argumentVector.pointers(), environment.pointers());
    if (refusal != 0) {
        throw posixError(refusal, QStringLiteral("“%1” could not be started").arg(executable));
    }
    return pid;
}

} // namespace

int runSilently(const QString& executable, const QStringList& arguments) {
    const pid_t pid = start(executable, arguments);
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0) {
        if (errno != EINTR) {
            throw posixError(errno, QStringLiteral("“%1” was lost sight of").arg(executable));
        }
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : kEndedBySignal + WTERMSIG(status);
}

} // namespace orvanta
