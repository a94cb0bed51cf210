// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace orvanta {

/// The file operations that the logic makes. All are synchronous. Failures are `PlatformError`s
/// whose description names the file and the system's reason.
class FileManager {
public:
    virtual ~FileManager() = default;

    /// With all intermediate directories; an existing directory is no error.
    virtual void createDirectory(const QString& path) = 0;

    /// True for an object of any kind, links followed; false on every error.
    virtual bool itemExists(const QString& path) const = 0;

    /// True for a file that the current user may execute; false on every error.
    virtual bool isExecutableFile(const QString& path) const = 0;

    /// Copies a file byte for byte with its mode. Fails when `to` exists.
    virtual void copyItem(const QString& from, const QString& to) = 0;

    /// The whole file.
    virtual QByteArray readFile(const QString& path) const = 0;
};

/// The whole file, or nothing when it cannot be read, for the callers to whom the reason is all
/// one.
std::optional<QByteArray> readIfPossible(const FileManager& files, const QString& path);

} // namespace orvanta
