// SPDX-License-Identifier: MIT
#include "platform/posix/tree_copy.h"

#include "platform/posix/file_copy.h"
#include "platform/posix/per_system_files.h"
#include "platform/posix/posix_error.h"

#include <QFile>

#include <cerrno>
#include <climits>
#include <fcntl.h>

namespace orvanta {
namespace {

/// Until a copy is complete and gets the mode of its original.
constexpr mode_t kOwnerOnlyFile = 0600;
constexpr mode_t kOwnerOnlyDirectory = 0700;

bool isSame(const struct stat& one, const struct stat& other) {
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

PlatformError refusal(const QString& from, const QString& to, const QString& reason) {
    return PlatformError(QStringLiteral("posix"), EINVAL,
                         QStringLiteral("%1: %2.").arg(copyFailure(from, to), reason));
}

} // namespace

TreeCopy::TreeCopy(const QString& from, const QString& to)
    : m_from(from), m_to(to), m_source(openSource()), m_copy(FileDescriptor()) {
    // Listed before the copy exists, which may lie in the same directory.
    list(QByteArray());
    m_copy = TreePosition(makeTop());
    requireCall(::fstat(m_copy.directory(), &m_top));
}

FileDescriptor TreeCopy::openSource() const {
    FileDescriptor source;
    require(openDirectory(AT_FDCWD, QFile::encodeName(m_from), source));
    return source;
}

FileDescriptor TreeCopy::makeTop() {
    const QByteArray path = QFile::encodeName(m_to);
    requireCall(::mkdir(path.constData(), kOwnerOnlyDirectory));
    FileDescriptor top;
    require(openDirectory(AT_FDCWD, path, top));
    return top;
}

void TreeCopy::run() {
    while (true) {
        std::vector<QByteArray>& remaining = m_levels.back().remaining;
        if (!remaining.empty()) {
            const QByteArray name = remaining.back();
            remaining.pop_back();
            m_entry = name;
            copyEntry(name);
        } else if (m_source.isAtTop()) {
            require(copyAttributes(m_levels.back().status, m_copy.directory()));
            return;
        } else {
            leave();
        }
    }
}

void TreeCopy::copyEntry(const QByteArray& name) {
    struct stat status {};
    requireCall(::fstatat(m_source.directory(), name.constData(), &status, AT_SYMLINK_NOFOLLOW));
    switch (status.st_mode & S_IFMT) {
    case S_IFREG:
        return copyFile(name);
    case S_IFLNK:
        return require(copyLink(m_source.directory(), name, m_copy.directory(), name));
    case S_IFDIR:
        if (isSame(status, m_top)) {
            throw refusal(below(m_from), below(m_to),
                          QStringLiteral("A folder cannot be copied into itself"));
        }
        return enter(name);
    default:
        throw notCopyable(below(m_from), below(m_to));
    }
}

void TreeCopy::copyFile(const QByteArray& name) {
    // Something else may have taken the file's place meanwhile: no link, and no waiting for a pipe.
    const FileDescriptor source(::openat(m_source.directory(), name.constData(),
                                         O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    requireCall(source.get());
    struct stat status {};
    requireCall(::fstat(source.get(), &status));
    if (!S_ISREG(status.st_mode)) {
        throw notCopyable(below(m_from), below(m_to));
    }
    const FileDescriptor copy = createFile(source.get(), name);
    require(copyAttributes(status, copy.get()));
}

FileDescriptor TreeCopy::createFile(int source, const QByteArray& name) {
    if (m_clones) {
        FileDescriptor clone = createClone(source, m_copy.directory(), name);
        if (clone.isOpen()) {
            return clone;
        }
        m_clones = false;
    }
    FileDescriptor copy(::openat(m_copy.directory(), name.constData(),
                                 O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                                 kOwnerOnlyFile));
    requireCall(copy.get());
    require(copyContents(source, copy.get()));
    return copy;
}

void TreeCopy::enter(const QByteArray& name) {
    require(m_source.enter(name));
    requireCall(::mkdirat(m_copy.directory(), name.constData(), kOwnerOnlyDirectory));
    require(m_copy.enter(name));
    list(name);
}

void TreeCopy::leave() {
    FileDescriptor source;
    FileDescriptor copy;
    m_entry.clear();
    require(m_source.leave(source));
    require(m_copy.leave(copy));
    require(copyAttributes(m_levels.back().status, copy.get()));
    m_levels.pop_back();
}

void TreeCopy::list(const QByteArray& name) {
    m_entry.clear();
    Level level{name, {}, {}};
    requireCall(::fstat(m_source.directory(), &level.status));
    const int error = listDirectory(m_source.directory(), ".", level.remaining);
    m_levels.push_back(std::move(level));
    require(error);
}

QString TreeCopy::below(const QString& top) const {
    QString path = top;
    for (std::size_t i = 1; i < m_levels.size(); ++i) {
        path += u'/' + QFile::decodeName(m_levels[i].name);
    }
    return m_entry.isEmpty() ? path : path + u'/' + QFile::decodeName(m_entry);
}

void TreeCopy::require(int error) const {
    if (error != 0) {
        throw posixError(error, copyFailure(below(m_from), below(m_to)));
    }
}

void TreeCopy::requireCall(int returned) const {
    require(returned < 0 ? errno : 0);
}

int copyLink(int fromDirectory, const QByteArray& from, int toDirectory, const QByteArray& to) {
    struct stat status {};
    QByteArray target(PATH_MAX, '\0');
    const ssize_t length = ::readlinkat(fromDirectory, from.constData(), target.data(),
                                        static_cast<std::size_t>(target.size()));
    if (length < 0 ||
        ::fstatat(fromDirectory, from.constData(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
        return errno;
    }
    target.truncate(length);
    if (::symlinkat(target.constData(), toDirectory, to.constData()) != 0 ||
        ::utimensat(toDirectory, to.constData(), timesOf(status).data(), AT_SYMLINK_NOFOLLOW) !=
            0) {
        return errno;
    }
    return 0;
}

QString copyFailure(const QString& from, const QString& to) {
    return QStringLiteral("“%1” could not be copied to “%2”").arg(from, to);
}

PlatformError notCopyable(const QString& from, const QString& to) {
    return refusal(from, to, QStringLiteral("It is neither a file nor a folder nor a link"));
}

} // namespace orvanta
