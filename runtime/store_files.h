// SPDX-License-Identifier: MIT
#pragma once

#include "runtime/runtime_records.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>

namespace orvanta {

class FileManager;

/// The directory name of a version: "/" and ":" become "_", everything else stays. An empty
/// version has an empty name.
QString directoryName(const QString& version);

/// True unless the directory of that name would not be one of the store's own: "", ".", "..", or
/// one that a file system would cut short.
bool isSafeDirectoryName(const QString& name);

/// Throws `PlatformError` for a version whose directory would not be one of the store's own:
/// replacing that would take other versions, or the whole store, along.
void requireDirectoryName(const QString& version);

/// Where the store keeps what, below the state root.
class StorePaths {
public:
    explicit StorePaths(const QString& stateRoot)
        : m_root(stateRoot + QStringLiteral("/runtime")) {}

    QString currentState() const { return m_root + QStringLiteral("/current.json"); }
    QString versions() const { return m_root + QStringLiteral("/versions"); }
    QString staging() const { return m_root + QStringLiteral("/staging"); }
    QString version(const QString& version) const;
    /// A scratch directory for one assembly of `version`, named apart by `uuid`.
    QString work(const QString& version, const QString& uuid) const;

private:
    QString m_root;
};

// The file operations below are synchronous and usable from any thread. Unless they say otherwise
// they throw the `PlatformError` of the first operation that fails.

/// Removes the item and everything below it; a missing one is no error.
void removeIfExists(FileManager& files, const QString& path);

/// Copies `from` to `to` in place of whatever is there.
void copyReplacing(FileManager& files, const QString& from, const QString& to);

/// Writes an encoded record, creating its directory first.
void writeRecord(FileManager& files, const QString& path, const QByteArray& record);

/// The names in a directory; none when it cannot be listed.
QStringList listIfPossible(const FileManager& files, const QString& directory);

/// Nothing when the record is missing, cannot be read or does not decode.
std::optional<MacRuntimeCurrentState> readCurrentState(const FileManager& files,
                                                       const QString& path);
std::optional<MacRuntimeMetadata> readMetadata(const FileManager& files, const QString& path);

/// What it takes to make a version directory out of another runtime.
struct VersionAssembly {
    QString source;      ///< a complete runtime
    QString work;        ///< scratch directory on the volume of `destination`
    QString versions;    ///< parent of `destination`
    QString destination; ///< replaced by a complete copy
    QByteArray metadata; ///< encoded; becomes `local-server/runtime.json`
};

/// Copies into the scratch directory first, so that the destination is there completely or not at
/// all; nothing is written through a link of the source. After a failure the scratch directory
/// stays where it is.
void assembleVersion(FileManager& files, const VersionAssembly& assembly);

} // namespace orvanta
