// SPDX-License-Identifier: MIT
#pragma once

#include "platform/file_manager.h"

#include <QStringList>

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace orvanta::fakes {

/// A file system in memory. Paths have no trailing slash.
class FakeFiles : public FileManager {
public:
    struct Item {
        bool isDirectory = false;
        bool isExecutable = false;
        QByteArray bytes;

        bool operator==(const Item&) const = default;
    };

    void createDirectory(const QString& path) override;
    bool itemExists(const QString& path) const override;
    bool isDirectory(const QString& path) const override;
    bool isExecutableFile(const QString& path) const override;
    QString behindLinks(const QString& path) const override;
    void copyItem(const QString& from, const QString& to) override;
    void moveItem(const QString& from, const QString& to) override;
    void removeItem(const QString& path) override;
    QStringList contentsOfDirectory(const QString& path) const override;
    QByteArray readFile(const QString& path) const override;
    void writeFile(const QString& path, const QByteArray& bytes) override;

    // What a test puts there; parents come into being by themselves.
    void addFile(const QString& path, const QByteArray& bytes = "x", bool isExecutable = false);
    void addDirectory(const QString& path);
    /// The item at `path` only, not what is below it.
    void remove(const QString& path) { items.erase(path); }
    /// A complete runtime below `root`.
    void addRuntime(const QString& root);
    /// The bytes of a file; "(none)" when there is none.
    QByteArray bytesOf(const QString& path) const;
    /// The names in a directory, sorted; nothing when there is no such directory.
    QStringList namesIn(const QString& path) const;

    std::map<QString, Item> items;
    /// Items that are links, and where those lead. To all other operations a link is whatever
    /// `items` holds in its place.
    std::map<QString, QString> links;
    /// Operations named here, as "copyItem" or "copyItem /path" (of a copy or move, the
    /// destination), fail with the reason.
    std::map<std::string, QString> failures;
    /// How many reads of a path fail before one succeeds.
    mutable std::map<QString, int> failingReads;
    /// Every path asked about by itemExists or isExecutableFile, in order.
    mutable std::vector<QString> questions;
    /// Every operation that changes something, in order, also those that failed: "create PATH",
    /// "copy FROM TO", "move FROM TO", "remove PATH", "write PATH". On a worker thread with "* "
    /// in front.
    QStringList changes;
    /// Every file read, marked in the same way.
    mutable QStringList reads;
    std::function<bool()> isInBackground = [] { return false; };
    /// Directories are listed from Z to A.
    bool listsBackwards = false;

private:
    void failIfTold(const char* operation, const QString& path) const;
    void failUnlessFree(const QString& path) const;
    QString marked(const QString& operation) const;
};

} // namespace orvanta::fakes
