// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>

namespace orvanta {

/// The file operations that the logic makes. All are synchronous and can be used from any thread.
/// Failures are `PlatformError`s whose description names the file and the system's reason.
class FileManager {
public:
    virtual ~FileManager() = default;

    /// With all intermediate directories; an existing directory is no error.
    virtual void createDirectory(const QString& path) = 0;

    /// True for an object of any kind, links followed; false on every error.
    virtual bool itemExists(const QString& path) const = 0;

    /// True for a directory, links followed; false on every error.
    virtual bool isDirectory(const QString& path) const = 0;

    /// True for a file that the current user may execute; false on every error.
    virtual bool isExecutableFile(const QString& path) const = 0;

    /// The same item with no link in its path; `path` itself when there is no such item.
    virtual QString behindLinks(const QString& path) const = 0;

    /// Copies a file, a directory with all below it, or a symbolic link as such, with the modes
    /// and the times of modification. Fails when `to` exists or when there is a socket, pipe or
    /// device in the tree; what was copied until then remains.
    virtual void copyItem(const QString& from, const QString& to) = 0;

    /// Renames, within one volume. Fails when `to` exists.
    virtual void moveItem(const QString& from, const QString& to) = 0;

    /// Removes a file, a link as such, or a directory with all below it. Never follows a link.
    /// Fails when there is no such item.
    virtual void removeItem(const QString& path) = 0;

    /// The names in a directory, without "." and "..", in the file system's order.
    virtual QStringList contentsOfDirectory(const QString& path) const = 0;

    /// The whole file.
    virtual QByteArray readFile(const QString& path) const = 0;

    /// Makes `bytes` the whole contents of a file: an existing one of up to 4 KiB is overwritten in
    /// place by up to 4 KiB, a larger one is replaced and keeps its mode, a new one gets the user's
    /// default mode.
    ///
    /// Whatever happens, JSON stays JSON: a process killed at any instant leaves the old contents
    /// or the new ones, either perhaps with blanks behind them, and a disk that is full leaves the
    /// old ones. A new file appears with its contents. Nothing is synchronised to the disk.
    virtual void writeFile(const QString& path, const QByteArray& bytes) = 0;
};

/// The whole file, or nothing when it cannot be read, for the callers to whom the reason is all
/// one.
std::optional<QByteArray> readIfPossible(const FileManager& files, const QString& path);

} // namespace orvanta
