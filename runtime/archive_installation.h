// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

namespace orvanta {

class ArchiveTool;
class FileManager;

/// One archive on its way into the store.
struct ArchiveInstallation {
    QByteArray archive;  ///< the zip file itself
    QString work;        ///< scratch directory of its own, on the volume of `destination`
    QString versions;    ///< parent of `destination`
    QString destination; ///< the version directory, replaced
    QByteArray metadata; ///< encoded; for an archive that brings no `runtime.json` of its own
};

enum class ArchivePlacement {
    placed,
    noRuntimeFound, ///< nothing in the archive is a runtime; the destination is untouched
    notValid,       ///< what was placed is incomplete; the destination has been removed
};

/// Unpacks the archive in its scratch directory and puts the runtime that it holds, at the top or
/// in one directory, at the destination. Takes long: any thread. Throws the `PlatformError` of the
/// first operation that fails and leaves everything as it is then.
ArchivePlacement placeArchive(FileManager& files, ArchiveTool& archiveTool,
                              ArchiveInstallation installation);

} // namespace orvanta
