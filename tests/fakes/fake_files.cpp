// SPDX-License-Identifier: MIT
#include "fakes/fake_files.h"

#include "base/platform_error.h"

#include <algorithm>

namespace orvanta::fakes {

namespace {

PlatformError failure(const QString& reason) {
    return {QStringLiteral("fake"), 1, reason};
}

QString parentOf(const QString& path) {
    return path.left(path.lastIndexOf(QLatin1Char('/')));
}

bool isAtOrBelow(const QString& path, const QString& root) {
    return path == root || path.startsWith(root + QLatin1Char('/'));
}

} // namespace

void FakeFiles::failIfTold(const char* operation, const QString& path) const {
    const std::string name = operation;
    for (const auto& key : {name, name + " " + path.toStdString()}) {
        const auto found = failures.find(key);
        if (found != failures.end()) {
            throw failure(found->second);
        }
    }
}

void FakeFiles::failUnlessFree(const QString& path) const {
    if (items.contains(path)) {
        throw failure(QStringLiteral("%1 exists").arg(path));
    }
    const QString parent = parentOf(path);
    if (!parent.isEmpty() && !isDirectory(parent)) {
        throw failure(QStringLiteral("%1 does not exist").arg(parent));
    }
}

QString FakeFiles::marked(const QString& operation) const {
    return (isInBackground() ? QStringLiteral("* ") : QString()) + operation;
}

void FakeFiles::createDirectory(const QString& path) {
    changes.append(marked(QStringLiteral("create %1").arg(path)));
    failIfTold("createDirectory", path);
    addDirectory(path);
}

bool FakeFiles::itemExists(const QString& path) const {
    questions.push_back(path);
    return items.contains(path);
}

bool FakeFiles::isDirectory(const QString& path) const {
    const auto found = items.find(path);
    return found != items.end() && found->second.isDirectory;
}

bool FakeFiles::isExecutableFile(const QString& path) const {
    questions.push_back(path);
    const auto found = items.find(path);
    return found != items.end() && !found->second.isDirectory && found->second.isExecutable;
}

QString FakeFiles::behindLinks(const QString& path) const {
    const auto found = links.find(path);
    return found != links.end() ? found->second : path;
}

void FakeFiles::copyItem(const QString& from, const QString& to) {
    changes.append(marked(QStringLiteral("copy %1 %2").arg(from, to)));
    failIfTold("copyItem", to);
    failUnlessFree(to);
    if (!items.contains(from)) {
        throw failure(QStringLiteral("%1 does not exist").arg(from));
    }
    const auto before = items;
    for (const auto& [path, item] : before) {
        if (isAtOrBelow(path, from)) {
            items[to + path.mid(from.size())] = item;
        }
    }
}

void FakeFiles::moveItem(const QString& from, const QString& to) {
    changes.append(marked(QStringLiteral("move %1 %2").arg(from, to)));
    failIfTold("moveItem", to);
    failUnlessFree(to);
    if (!items.contains(from)) {
        throw failure(QStringLiteral("%1 does not exist").arg(from));
    }
    const auto before = items;
    for (const auto& [path, item] : before) {
        if (isAtOrBelow(path, from)) {
            items.erase(path);
            items[to + path.mid(from.size())] = item;
        }
    }
}

void FakeFiles::removeItem(const QString& path) {
    changes.append(marked(QStringLiteral("remove %1").arg(path)));
    failIfTold("removeItem", path);
    if (!items.contains(path)) {
        throw failure(QStringLiteral("%1 does not exist").arg(path));
    }
    std::erase_if(items, [&path](const auto& item) { return isAtOrBelow(item.first, path); });
}

QStringList FakeFiles::contentsOfDirectory(const QString& path) const {
    failIfTold("contentsOfDirectory", path);
    if (!isDirectory(path)) {
        throw failure(QStringLiteral("%1 cannot be listed").arg(path));
    }
    QStringList names = namesIn(path);
    if (listsBackwards) {
        std::reverse(names.begin(), names.end());
    }
    return names;
}

QByteArray FakeFiles::readFile(const QString& path) const {
    reads.append(marked(path));
    failIfTold("readFile", path);
    if (const auto failing = failingReads.find(path);
        failing != failingReads.end() && failing->second-- > 0) {
        throw failure(QStringLiteral("%1 cannot be read now").arg(path));
    }
    const auto found = items.find(path);
    if (found == items.end() || found->second.isDirectory) {
        throw failure(QStringLiteral("%1 cannot be read").arg(path));
    }
    return found->second.bytes;
}

void FakeFiles::writeFile(const QString& path, const QByteArray& bytes) {
    changes.append(marked(QStringLiteral("write %1").arg(path)));
    failIfTold("writeFile", path);
    if (isDirectory(path) || !isDirectory(parentOf(path))) {
        throw failure(QStringLiteral("%1 cannot be written").arg(path));
    }
    items[path].bytes = bytes;
}

void FakeFiles::addFile(const QString& path, const QByteArray& bytes, bool isExecutable) {
    addDirectory(parentOf(path));
    items[path] = {.isDirectory = false, .isExecutable = isExecutable, .bytes = bytes};
}

void FakeFiles::addDirectory(const QString& path) {
    items[path] = {.isDirectory = true, .isExecutable = false, .bytes = {}};
    for (QString parent = parentOf(path); !parent.isEmpty(); parent = parentOf(parent)) {
        items[parent].isDirectory = true;
    }
}

void FakeFiles::addRuntime(const QString& root) {
    addDirectory(root + QStringLiteral("/local-server"));
    for (const char* file : {"server.js", "config.installer.json", "cloudflared",
                             "views/project-list.html", "public/index3.html"}) {
        addFile(root + QStringLiteral("/local-server/") + QLatin1String(file));
    }
    addFile(root + QStringLiteral("/node-runtime/node"), "node", true);
}

QByteArray FakeFiles::bytesOf(const QString& path) const {
    const auto found = items.find(path);
    return found == items.end() ? QByteArray("(none)") : found->second.bytes;
}

QStringList FakeFiles::namesIn(const QString& path) const {
    QStringList names;
    for (const auto& [itemPath, item] : items) {
        if (parentOf(itemPath) == path) {
            names.append(itemPath.mid(path.size() + 1));
        }
    }
    return names;
}

} // namespace orvanta::fakes
