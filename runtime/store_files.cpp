// SPDX-License-Identifier: MIT
#include "runtime/store_files.h"

#include "base/json.h"
#include "base/platform_error.h"
#include "platform/file_manager.h"

namespace orvanta {

namespace {

template <typename Record>
std::optional<Record> readRecord(const FileManager& files, const QString& path) {
    try {
        return Record::decode(files.readFile(path));
    } catch (const PlatformError&) {
        return std::nullopt;
    }
}

QString parentOf(const QString& path) {
    return path.left(path.lastIndexOf(QLatin1Char('/')));
}

} // namespace

QString directoryName(const QString& version) {
    QString name = version;
    name.replace(QLatin1Char('/'), QLatin1Char('_'));
    name.replace(QLatin1Char(':'), QLatin1Char('_'));
    return name;
}

bool isSafeDirectoryName(const QString& name) {
    return !name.isEmpty() && name != QStringLiteral(".") && name != QStringLiteral("..") &&
           !name.contains(QChar::Null);
}

void requireDirectoryName(const QString& version) {
    if (!isSafeDirectoryName(directoryName(version))) {
        throw PlatformError(
            QStringLiteral("OrvantaMacRuntimeUpdater"), 3,
            QStringLiteral("The version \"%1\" cannot name a directory.").arg(version));
    }
}

QString StorePaths::version(const QString& version) const {
    return versions() + QLatin1Char('/') + directoryName(version);
}

QString StorePaths::work(const QString& version, const QString& uuid) const {
    return staging() + QLatin1Char('/') + directoryName(version) + QLatin1Char('-') + uuid;
}

void removeIfExists(FileManager& files, const QString& path) {
    if (files.itemExists(path)) {
        files.removeItem(path);
    }
}

void copyReplacing(FileManager& files, const QString& from, const QString& to) {
    removeIfExists(files, to);
    files.copyItem(from, to);
}

void writeRecord(FileManager& files, const QString& path, const QByteArray& record) {
    files.createDirectory(parentOf(path));
    files.writeFile(path, record);
}

QStringList listIfPossible(const FileManager& files, const QString& directory) {
    try {
        return files.contentsOfDirectory(directory);
    } catch (const PlatformError&) {
        return {};
    }
}

std::optional<MacRuntimeCurrentState> readCurrentState(const FileManager& files,
                                                       const QString& path) {
    return readRecord<MacRuntimeCurrentState>(files, path);
}

std::optional<MacRuntimeMetadata> readMetadata(const FileManager& files, const QString& path) {
    return readRecord<MacRuntimeMetadata>(files, path);
}

void assembleVersion(FileManager& files, const VersionAssembly& assembly) {
    removeIfExists(files, assembly.work);
    files.createDirectory(assembly.work);
    for (const QString& part : {QStringLiteral("/local-server"), QStringLiteral("/node-runtime")}) {
        // Of a part that is a link, the copy would lead back to the original.
        copyReplacing(files, files.behindLinks(assembly.source + part), assembly.work + part);
    }
    const QString record = assembly.work + QStringLiteral("/local-server/runtime.json");
    // The original's own may be a link, which writing would follow.
    removeIfExists(files, record);
    writeRecord(files, record, assembly.metadata);
    removeIfExists(files, assembly.destination);
    files.createDirectory(assembly.versions);
    files.moveItem(assembly.work, assembly.destination);
}

} // namespace orvanta
