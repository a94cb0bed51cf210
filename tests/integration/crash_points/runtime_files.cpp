// SPDX-License-Identifier: MIT
#include "integration/crash_points/runtime_files.h"

#include "platform/posix/file_descriptor.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace orvanta {
namespace {

/// What nobody asks for stands at both ends: file systems list the oldest first or the newest, and
/// trees are copied and removed in that order.
constexpr const char* kFiles[] = {
    "local-server/lib/module.js",
    "local-server/server.js",
    "local-server/config.installer.json",
    "local-server/cloudflared",
    "local-server/views/project-list.html",
    "local-server/public/index3.html",
    "node-runtime/node",
    "node-runtime/licence",
};

/// Says its version, and the first line of what it is to run.
constexpr const char* kNode = "#!/bin/sh\nread -r line <\"$1\" && echo \"%1: $line\"\n";

QByteArray contentsOf(const char* file, const QString& version) {
    if (QByteArrayView(file).endsWith("/node")) {
        return QString::fromLatin1(kNode).arg(version).toUtf8();
    }
    return QByteArray(file) + " of " + version.toUtf8() + '\n';
}

std::filesystem::path native(const QString& path) {
    return QFile::encodeName(path).toStdString();
}

QByteArray readAll(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

std::string stateOf(const std::filesystem::directory_entry& entry) {
    const auto status = entry.symlink_status();
    std::string state = std::to_string(static_cast<int>(status.type())) + ' ' +
                        std::to_string(static_cast<unsigned>(status.permissions()));
    if (entry.is_symlink()) {
        return state + " -> " + std::filesystem::read_symlink(entry.path()).string();
    }
    if (entry.is_regular_file()) {
        state += ' ' + readAll(QFile::decodeName(entry.path().c_str())).toStdString();
    }
    return state;
}

} // namespace

void makeRuntime(const QString& root, const QString& version) {
    for (const char* name : kFiles) {
        const QString path = root + u'/' + QLatin1String(name);
        ASSERT_TRUE(QDir().mkpath(QFileInfo(path).path()));
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(contentsOf(name, version));
        if (path.endsWith(QStringLiteral("/node"))) {
            file.setPermissions(file.permissions() | QFile::ExeOwner);
        }
    }
}

bool isWhole(const QString& root, const QString& version) {
    for (const char* name : kFiles) {
        if (readAll(root + u'/' + QLatin1String(name)) != contentsOf(name, version)) {
            return false;
        }
    }
    return QFileInfo(root + QStringLiteral("/node-runtime/node")).isExecutable();
}

QByteArray expectedOutput(const QString& version) {
    return version.toUtf8() + ": " + contentsOf("local-server/server.js", version);
}

QByteArray outputOf(const QString& node, const QString& localServer) {
    int ends[2] = {-1, -1};
    ::pipe2(ends, O_CLOEXEC);
    const FileDescriptor output(ends[0]);
    FileDescriptor input(ends[1]);
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, input.get(), STDOUT_FILENO);
    QByteArray program = QFile::encodeName(node);
    QByteArray script = QFile::encodeName(localServer) + "/server.js";
    char* arguments[] = {program.data(), script.data(), nullptr};
    char* noVariables[] = {nullptr};
    pid_t process = -1;
    const int error =
        ::posix_spawn(&process, program.constData(), &actions, nullptr, arguments, noVariables);
    ::posix_spawn_file_actions_destroy(&actions);
    if (error != 0) {
        return ::strerror(error);
    }
    input.reset();
    std::array<char, 4096> bytes{};
    const ssize_t count = ::read(output.get(), bytes.data(), bytes.size());
    ::waitpid(process, nullptr, 0);
    return QByteArray(bytes.data(), std::max<ssize_t>(count, 0));
}

QByteArray zipOf(const QString& folder) {
    const QTemporaryDir scratch;
    const QString archive = scratch.filePath(QStringLiteral("archive.zip"));
    const QStringList options{QStringLiteral("-c"),
                              QStringLiteral("--format"),
                              QStringLiteral("zip"),
                              QStringLiteral("-f"),
                              archive,
                              QStringLiteral("-C"),
                              folder};
    const QStringList entries =
        QDir(folder).entryList(QDir::AllEntries | QDir::NoDotAndDotDot, QDir::Name);
    EXPECT_EQ(QProcess::execute(QStringLiteral("bsdtar"), options + entries), 0);
    return readAll(archive);
}

void copyTree(const QString& from, const QString& to) {
    std::filesystem::copy(native(from), native(to), std::filesystem::copy_options::recursive);
}

Snapshot snapshotOf(const QString& root) {
    const std::string top = native(root).string();
    Snapshot items;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(native(root))) {
        items[entry.path().string().substr(top.size())] = stateOf(entry);
    }
    return items;
}

} // namespace orvanta
