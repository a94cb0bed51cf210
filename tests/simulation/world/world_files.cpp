// SPDX-License-Identifier: MIT
#include "simulation/world/world_files.h"

#include "base/platform_error.h"

#include <vector>

namespace orvanta::simulation {

namespace {

QStringView nameOf(QStringView path) {
    return path.mid(path.lastIndexOf(QLatin1Char('/')) + 1);
}

QStringView parentOf(QStringView path) {
    return path.left(path.lastIndexOf(QLatin1Char('/')));
}

} // namespace

std::unique_ptr<FileNode> FileNode::copy() const {
    auto node = std::make_unique<FileNode>();
    node->isDirectory = isDirectory;
    node->isExecutable = isExecutable;
    node->bytes = bytes;
    for (const auto& [name, child] : children) {
        node->children.emplace(name, child->copy());
    }
    return node;
}

const FileNode* WorldFiles::find(QStringView path) const {
    const FileNode* node = &m_root;
    qsizetype start = 1;
    while (node != nullptr && start <= path.size()) {
        qsizetype end = path.indexOf(QLatin1Char('/'), start);
        end = end < 0 ? path.size() : end;
        const QStringView name = path.mid(start, end - start);
        start = end + 1;
        if (name.isEmpty()) {
            continue;
        }
        const auto found = node->children.find(name);
        node = found == node->children.end() ? nullptr : found->second.get();
    }
    return node;
}

FileNode* WorldFiles::find(QStringView path) {
    return const_cast<FileNode*>(std::as_const(*this).find(path));
}

FileNode* WorldFiles::directoryOf(QStringView path) {
    FileNode* node = find(parentOf(path));
    return node != nullptr && node->isDirectory ? node : nullptr;
}

void WorldFiles::refuse(const QString& path, const char* reason) const {
    throw PlatformError(QStringLiteral("posix"), 5,
                        QStringLiteral("“%1”: %2.").arg(path, QLatin1String(reason)));
}

void WorldFiles::admit(const QString& path, bool needsSpace) {
    beforeChange();
    const auto disk = m_conditions.as<Disk>(Condition::disk);
    const bool isItsTurn = failsAfter > 0 && --failsAfter == 0;
    if (isItsTurn || disk == Disk::readOnly || (disk == Disk::full && needsSpace)) {
        ++failedChanges;
        refuse(path, disk == Disk::full ? "No space left on device" : "Input/output error");
    }
}

void WorldFiles::change(const QString& path, bool needsSpace) {
    admit(path, needsSpace);
    ++treeChanges;
}

void WorldFiles::requireFree(const QString& to) {
    if (find(to) != nullptr) {
        refuse(to, "File exists");
    }
    if (directoryOf(to) == nullptr) {
        refuse(to, "No such directory");
    }
}

void WorldFiles::makeDirectory(const QString& path) {
    change(path, true);
    // Looked up anew: others go on while this one is held up.
    FileNode* parent = directoryOf(path);
    if (parent == nullptr) {
        refuse(path, "No such directory");
    }
    auto& made = parent->children[nameOf(path).toString()];
    if (!made) {
        made = std::make_unique<FileNode>();
        made->isDirectory = true;
    }
}

void WorldFiles::createDirectory(const QString& path) {
    for (qsizetype end = 0; end < path.size();) {
        end = path.indexOf(QLatin1Char('/'), end + 1);
        end = end < 0 ? path.size() : end;
        const QString part = path.left(end);
        if (find(part) == nullptr) {
            makeDirectory(part);
        }
        if (!isDirectory(part)) {
            refuse(path, "Not a directory");
        }
    }
}

bool WorldFiles::isDirectory(const QString& path) const {
    const FileNode* node = find(path);
    return node != nullptr && node->isDirectory;
}

bool WorldFiles::isExecutableFile(const QString& path) const {
    const FileNode* node = find(path);
    return node != nullptr && !node->isDirectory && node->isExecutable;
}

void WorldFiles::copyInto(const FileNode& source, const QString& to) {
    change(to, true);
    // Looked up anew each time: others go on while this one is held up.
    FileNode* directory = directoryOf(to);
    if (directory == nullptr) {
        refuse(to, "No such directory");
    }
    auto made = std::make_unique<FileNode>();
    made->isDirectory = source.isDirectory;
    made->isExecutable = source.isExecutable;
    made->bytes = source.bytes;
    directory->children[nameOf(to).toString()] = std::move(made);
    for (const auto& [name, child] : source.children) {
        copyInto(*child, to + QLatin1Char('/') + name);
    }
}

void WorldFiles::copyItem(const QString& from, const QString& to) {
    requireFree(to);
    const FileNode* source = find(from);
    if (source == nullptr) {
        refuse(from, "No such file");
    }
    // The original stays out of reach while others go on.
    const auto original = source->copy();
    copyInto(*original, to);
}

void WorldFiles::moveItem(const QString& from, const QString& to) {
    requireFree(to);
    if (find(from) == nullptr) {
        refuse(from, "No such file");
    }
    onRemove(from);
    change(to, false);
    requireFree(to);
    if (find(from) == nullptr) {
        refuse(from, "No such file");
    }
    auto node = directoryOf(from)->children.extract(nameOf(from).toString());
    node.key() = nameOf(to).toString();
    directoryOf(to)->children.insert(std::move(node));
}

void WorldFiles::removeTree(const QString& path) {
    for (const FileNode* node = find(path); node != nullptr && !node->children.empty();
         node = find(path)) {
        removeTree(path + QLatin1Char('/') + node->children.begin()->first);
    }
    change(path, false);
    if (FileNode* directory = directoryOf(path)) {
        directory->children.erase(nameOf(path).toString());
    }
}

void WorldFiles::removeItem(const QString& path) {
    if (find(path) == nullptr) {
        refuse(path, "No such file");
    }
    onRemove(path);
    removeTree(path);
}

QStringList WorldFiles::contentsOfDirectory(const QString& path) const {
    const FileNode* node = find(path);
    if (node == nullptr || !node->isDirectory) {
        refuse(path, "Not a directory");
    }
    QStringList names;
    for (const auto& [name, child] : node->children) {
        names.append(name);
    }
    return names;
}

QByteArray WorldFiles::readFile(const QString& path) const {
    onRead(path);
    if (m_conditions.as<Disk>(Condition::disk) == Disk::unreadable) {
        ++const_cast<WorldFiles*>(this)->failedReads;
        refuse(path, "Input/output error");
    }
    const FileNode* node = find(path);
    if (node == nullptr || node->isDirectory) {
        refuse(path, "No such file");
    }
    return node->bytes;
}

void WorldFiles::writeFile(const QString& path, const QByteArray& bytes) {
    admit(path, true);
    ++contentChanges;
    FileNode* directory = directoryOf(path);
    FileNode* node = find(path);
    if (directory == nullptr || (node != nullptr && node->isDirectory)) {
        refuse(path, "Cannot be written");
    }
    auto& entry = directory->children[nameOf(path).toString()];
    if (!entry) {
        entry = std::make_unique<FileNode>();
        ++treeChanges;
    }
    entry->bytes = bytes;
}

void WorldFiles::put(const QString& path, const QByteArray& bytes, bool isExecutable) {
    auto node = std::make_unique<FileNode>();
    node->bytes = bytes;
    node->isExecutable = isExecutable;
    putTree(path, std::move(node));
}

void WorldFiles::putTree(const QString& path, std::unique_ptr<FileNode> tree) {
    FileNode* node = &m_root;
    for (const auto& name : parentOf(path).split(QLatin1Char('/'), Qt::SkipEmptyParts)) {
        auto& child = node->children[name.toString()];
        if (!child) {
            child = std::make_unique<FileNode>();
            child->isDirectory = true;
        }
        node = child.get();
    }
    node->children[nameOf(path).toString()] = std::move(tree);
    ++treeChanges;
    ++contentChanges;
}

void WorldFiles::erase(const QString& path) {
    FileNode* directory = directoryOf(path);
    if (directory != nullptr) {
        directory->children.erase(nameOf(path).toString());
        ++treeChanges;
        ++contentChanges;
    }
}

bool WorldFiles::hasRoom() const {
    const auto disk = m_conditions.as<Disk>(Condition::disk);
    return disk != Disk::full && disk != Disk::readOnly;
}

std::optional<QByteArray> WorldFiles::peek(const QString& path) const {
    const FileNode* node = find(path);
    return node != nullptr && !node->isDirectory ? std::optional(node->bytes) : std::nullopt;
}

} // namespace orvanta::simulation
