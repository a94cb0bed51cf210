// SPDX-License-Identifier: MIT
#pragma once

#include "platform/file_manager.h"

namespace orvanta {

/// The file system of the machine, for the current user. Errors have the domain "posix" and the
/// system's error number. Folders get the user's default mode; only regular files of at most 64 MiB
/// can be read. Names that are not UTF-8 are met only below the paths given, and kept.
class PosixFileManager : public FileManager {
public:
    void createDirectory(const QString& path) override;
    bool itemExists(const QString& path) const override;
    bool isDirectory(const QString& path) const override;
    bool isExecutableFile(const QString& path) const override;
    QString behindLinks(const QString& path) const override;
    /// The copy of a single file appears under its name when it is complete and on the disk, or
    /// never. Blocks are shared with the original where the file system can do that.
    void copyItem(const QString& from, const QString& to) override;
    void moveItem(const QString& from, const QString& to) override;
    void removeItem(const QString& path) override;
    QStringList contentsOfDirectory(const QString& path) const override;
    QByteArray readFile(const QString& path) const override;
    void writeFile(const QString& path, const QByteArray& bytes) override;
};

} // namespace orvanta
