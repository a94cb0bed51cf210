// SPDX-License-Identifier: MIT
#pragma once

#include "platform/file_manager.h"
#include "simulation/world/conditions.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>

namespace orvanta::simulation {

/// A file or a directory with all below it.
struct FileNode {
    struct ByText {
        using is_transparent = void;
        bool operator()(QStringView left, QStringView right) const {
            return left.compare(right) < 0;
        }
    };
    using Children = std::map<QString, std::unique_ptr<FileNode>, ByText>;

    bool isDirectory = false;
    bool isExecutable = false;
    QByteArray bytes;
    Children children;

    std::unique_ptr<FileNode> copy() const;
};

/// A disk in memory, without links. Operations on trees go file by file, so that they can fail, be
/// interrupted or be seen half done.
class WorldFiles : public FileManager {
public:
    explicit WorldFiles(const Conditions& conditions) : m_conditions(conditions) {
        m_root.isDirectory = true;
    }

    void createDirectory(const QString& path) override;
    bool itemExists(const QString& path) const override { return find(path) != nullptr; }
    bool isDirectory(const QString& path) const override;
    bool isExecutableFile(const QString& path) const override;
    QString behindLinks(const QString& path) const override { return path; }
    void copyItem(const QString& from, const QString& to) override;
    void moveItem(const QString& from, const QString& to) override;
    void removeItem(const QString& path) override;
    QStringList contentsOfDirectory(const QString& path) const override;
    QByteArray readFile(const QString& path) const override;
    void writeFile(const QString& path, const QByteArray& bytes) override;

    // What the world does to it, whatever the condition of the disk.

    /// Parents come into being by themselves.
    void put(const QString& path, const QByteArray& bytes, bool isExecutable = false);
    void putTree(const QString& path, std::unique_ptr<FileNode> tree);
    void erase(const QString& path);
    const FileNode* find(QStringView path) const;
    /// Whether programs can write.
    bool hasRoom() const;
    /// Reads whatever the condition of the disk.
    std::optional<QByteArray> peek(const QString& path) const;

    /// The operation on a single file after that many more fails, once; 0 for none.
    int failsAfter = 0;
    /// Counts up with every change, but for those of single files that were there before.
    std::uint64_t treeChanges = 0;
    /// Counts up with every change of a file's contents.
    std::uint64_t contentChanges = 0;
    /// Reads and lists that failed through the condition of the disk, and changes that did.
    std::uint64_t failedReads = 0;
    std::uint64_t failedChanges = 0;
    /// Called before each change of a single file; a worker may be held up or ended in it.
    std::function<void()> beforeChange = [] {};
    /// Called with what a reader asks for.
    std::function<void(const QString&)> onRead = [](const QString&) {};
    /// Called for every item that is to be removed or moved away, as a whole.
    std::function<void(const QString&)> onRemove = [](const QString&) {};

private:
    FileNode* find(QStringView path);
    FileNode* directoryOf(QStringView path);
    void admit(const QString& path, bool needsSpace);
    void change(const QString& path, bool needsSpace);
    [[noreturn]] void refuse(const QString& path, const char* reason) const;
    void requireFree(const QString& to);
    void makeDirectory(const QString& path);
    void copyInto(const FileNode& source, const QString& to);
    void removeTree(const QString& path);

    const Conditions& m_conditions;
    FileNode m_root;
};

} // namespace orvanta::simulation
