// SPDX-License-Identifier: MIT
#include "platform/posix/spawn.h"

#include "platform/posix/per_system.h"
#include "platform/posix/posix_error.h"
#include "platform/posix/spawn_pieces.h"

#include <QFile>
#include <QStringBuilder>

#include <cerrno>
#include <fcntl.h>
#include <spawn.h>

namespace orvanta {
namespace {

struct Pipe {
    FileDescriptor readEnd;
    FileDescriptor writeEnd;
};

Pipe makeOutputPipe(const QString& failure) {
    int ends[2];
    if (!openPipe(ends)) {
        throw posixError(errno, failure);
    }
    Pipe pipe{FileDescriptor(ends[0]), FileDescriptor(ends[1])};
    if (::fcntl(pipe.readEnd.get(), F_SETFL, O_NONBLOCK) != 0) {
        throw posixError(errno, failure);
    }
    return pipe;
}

class FileActions {
public:
    FileActions(const QByteArray& workingDirectory, int outputEnd, int errorEnd) {
        ::posix_spawn_file_actions_init(&m_actions);
        ::posix_spawn_file_actions_addopen(&m_actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        ::posix_spawn_file_actions_adddup2(&m_actions, outputEnd, STDOUT_FILENO);
        ::posix_spawn_file_actions_adddup2(&m_actions, errorEnd, STDERR_FILENO);
        ::posix_spawn_file_actions_addchdir_np(&m_actions, workingDirectory.constData());
    }
    FileActions(const FileActions&) = delete;
    FileActions& operator=(const FileActions&) = delete;
    ~FileActions() { ::posix_spawn_file_actions_destroy(&m_actions); }

    posix_spawn_file_actions_t& get() { return m_actions; }

private:
    posix_spawn_file_actions_t m_actions;
};

StringVector argumentsOf(const ChildProcessOptions& options) {
    StringVector arguments;
    arguments.append(QFile::encodeName(options.executable));
    for (const QString& argument : options.arguments) {
        arguments.append(QFile::encodeName(argument));
    }
    return arguments;
}

StringVector environmentOf(const ChildProcessOptions& options) {
    StringVector environment;
    for (const auto& [name, value] : options.environment.all()) {
        environment.append(name % '=' % value);
    }
    return environment;
}

/// A launch reports one error code for the program and for its working directory.
QString describeRefusal(const ChildProcessOptions& options, const QString& failure) {
    const QByteArray inDirectory = QFile::encodeName(options.workingDirectory) + "/.";
    if (::access(inDirectory.constData(), X_OK) != 0) {
        return QStringLiteral("%1 in “%2”").arg(failure, options.workingDirectory);
    }
    return failure;
}

} // namespace

SpawnedProcess spawnProcess(const ChildProcessOptions& options) {
    const QString failure = QStringLiteral("“%1” could not be started").arg(options.executable);
    Pipe output = makeOutputPipe(failure);
    Pipe error = makeOutputPipe(failure);
    SpawnAttributes attributes(POSIX_SPAWN_SETPGROUP);
    FileActions actions(QFile::encodeName(options.workingDirectory), output.writeEnd.get(),
                        error.writeEnd.get());
    closeAllOtherDescriptors(attributes.get(), actions.get());
    StringVector arguments = argumentsOf(options);
    StringVector environment = environmentOf(options);

    pid_t pid = 0;
    const int refusal =
        ::posix_spawn(&pid, QFile::encodeName(options.executable).constData(), &actions.get(),
                      &attributes.get(), arguments.pointers(), environment.pointers());
    if (refusal != 0) {
        throw posixError(refusal, describeRefusal(options, failure));
    }
    return {pid, std::move(output.readEnd), std::move(error.readEnd)};
}

} // namespace orvanta
