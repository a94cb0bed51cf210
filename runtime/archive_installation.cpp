// SPDX-License-Identifier: MIT
#include "runtime/archive_installation.h"

#include "base/platform_error.h"
#include "platform/archive_tool.h"
#include "platform/file_manager.h"
#include "runtime/runtime_layout.h"
#include "runtime/store_files.h"

#include <optional>

namespace orvanta {

namespace {

PlatformError extractionFailure(int status) {
    return {QStringLiteral("OrvantaMacRuntimeUpdater"), status,
            QStringLiteral("ditto failed to extract runtime archive.")};
}

void extractZip(ArchiveTool& tool, const QString& archive, const QString& destination) {
    const int status = tool.extractZip(archive, destination);
    if (status != 0) {
        throw extractionFailure(status);
    }
}

void unpack(FileManager& files, ArchiveTool& tool, ArchiveInstallation& installation) {
    removeIfExists(files, installation.work);
    files.createDirectory(installation.work);
    const QString archive = installation.work + QStringLiteral("/runtime.zip");
    files.writeFile(archive, installation.archive);
    // Not needed any more; on the main thread it would take a while to give it back. Not by
    // `clear`, which counts references where a race detector cannot see it.
    installation.archive = QByteArray();
    extractZip(tool, archive, installation.work);
    files.removeItem(archive);
}

/// The names of the directories in `work` that are there themselves.
QStringList directoriesIn(const FileManager& files, const QString& work) {
    const QString real = files.behindLinks(work) + QLatin1Char('/');
    QStringList names = listIfPossible(files, work);
    names.removeIf([&](const QString& name) {
        const QString entry = work + QLatin1Char('/') + name;
        return !files.isDirectory(entry) || files.behindLinks(entry) != real + name;
    });
    return names;
}

std::optional<QString> findRuntimeRoot(const FileManager& files, const QString& work) {
    if (isValidRuntimeRoot(files, work)) {
        return work;
    }
    for (const QString& name : directoriesIn(files, work)) {
        const QString entry = work + QLatin1Char('/') + name;
        if (isValidRuntimeRoot(files, entry)) {
            return entry;
        }
    }
    return std::nullopt;
}

/// A tree that is being copied or removed can look complete before it is, or when it no longer is.
/// So both happen in staging, and the destination comes and goes by a rename. A runtime at the top
/// of the archive is copied: the scratch directory stays where it is. What the runtime replaces
/// goes when staging does.
void placeRoot(FileManager& files, const QString& root, const ArchiveInstallation& installation) {
    const bool isAtTop = root == installation.work;
    const QString ready = isAtTop ? installation.work + QStringLiteral("-copy") : root;
    if (isAtTop) {
        copyReplacing(files, root, ready);
    }
    files.createDirectory(installation.versions);
    if (files.itemExists(installation.destination)) {
        files.moveItem(installation.destination, installation.work + QStringLiteral("-replaced"));
    }
    files.moveItem(ready, installation.destination);
}

} // namespace

ArchivePlacement placeArchive(FileManager& files, ArchiveTool& archiveTool,
                              ArchiveInstallation installation) {
    unpack(files, archiveTool, installation);
    const auto root = findRuntimeRoot(files, installation.work);
    if (!root) {
        return ArchivePlacement::noRuntimeFound;
    }
    if (*root != installation.work && !archiveTool.isSelfContained(*root)) {
        // The directory is moved away from what its links refer to.
        throw extractionFailure(1);
    }
    placeRoot(files, *root, installation);
    const QString metadata = installation.destination + QStringLiteral("/runtime.json");
    if (!files.itemExists(metadata)) {
        writeRecord(files, metadata, installation.metadata);
    }
    if (!isValidRuntimeRoot(files, installation.destination)) {
        files.removeItem(installation.destination);
        return ArchivePlacement::notValid;
    }
    return ArchivePlacement::placed;
}

} // namespace orvanta
