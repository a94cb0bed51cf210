// SPDX-License-Identifier: MIT
#include "integration/crash_points/runtime_files.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <filesystem>

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

QByteArray contentsOf(const char* file, const QString& version) {
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
