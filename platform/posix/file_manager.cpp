// SPDX-License-Identifier: MIT
#include "platform/posix/file_manager.h"

#include "platform/posix/file_copy.h"
#include "platform/posix/file_descriptor.h"
#include "platform/posix/in_place_write.h"
#include "platform/posix/per_system_files.h"
#include "platform/posix/posix_error.h"
#include "platform/posix/staged_file.h"
#include "platform/posix/tree_copy.h"
#include "platform/posix/tree_position.h"
#include "platform/posix/tree_removal.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <vector>

namespace orvanta {
namespace {

constexpr qsizetype kLargestFile = 64 * 1024 * 1024;
constexpr qsizetype kPiece = 64 * 1024;

/// All zero, which is no kind of file, when there is no such item.
struct stat statusOf(const QString& path) {
    struct stat status {};
    if (::stat(QFile::encodeName(path).constData(), &status) != 0) {
        status = {};
    }
    return status;
}

/// 0 or the system's error number.
int makeDirectory(const QString& path) {
    return ::mkdir(QFile::encodeName(path).constData(), kPermissions) == 0 ? 0 : errno;
}

/// 0 or the system's error number.
int makeDirectories(const QString& path) {
    const int error = makeDirectory(path);
    const auto parentEnd = path.lastIndexOf(u'/');
    if (error == ENOENT && parentEnd > 0) {
        const int parentError = makeDirectories(path.left(parentEnd));
        return parentError != 0 ? parentError : makeDirectory(path);
    }
    return error != 0 && S_ISDIR(statusOf(path).st_mode) ? 0 : error;
}

struct OpenedFile {
    FileDescriptor file;
    struct stat status {};
    int error = 0; ///< the system's error number when it could not be opened
};

int reasonNotToRead(const struct stat& status) {
    if (S_ISDIR(status.st_mode)) {
        return EISDIR;
    }
    return S_ISREG(status.st_mode) ? 0 : EINVAL;
}

OpenedFile openForReading(const QString& path) {
    OpenedFile opened;
    // A pipe without a writer would otherwise hold the caller up.
    opened.file = FileDescriptor(
        ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!opened.file.isOpen() || ::fstat(opened.file.get(), &opened.status) != 0) {
        opened.error = errno;
        return opened;
    }
    opened.error = reasonNotToRead(opened.status);
    return opened;
}

/// How much to read at once: the records that each poll reads are small. Some files have no size.
qsizetype pieceFor(const struct stat& status) {
    return status.st_size > 0 ? std::min<qsizetype>(status.st_size + 1, kPiece) : kPiece;
}

/// Appends the file to `bytes`. 0 or the system's error number.
int readToEnd(const FileDescriptor& file, qsizetype piece, QByteArray& bytes) {
    while (true) {
        const qsizetype before = bytes.size();
        bytes.resize(before + piece);
        const ssize_t count =
            ::read(file.get(), bytes.data() + before, static_cast<std::size_t>(piece));
        const int error = count < 0 ? errno : 0;
        bytes.resize(before + (count > 0 ? count : 0));
        if (bytes.size() > kLargestFile) {
            return EFBIG;
        }
        if (count == 0 || (error != 0 && error != EINTR)) {
            return error;
        }
    }
}

/// The copy appears when it is complete and on the disk, or never.
int copyFile(const QString& from, const QString& to) {
    const OpenedFile source = openForReading(from);
    if (source.error != 0) {
        return source.error;
    }
    StagedFile copy(QFile::encodeName(to));
    if (const int error = copy.open()) {
        return error;
    }
    if (const int error = copyContents(source.file.get(), copy.descriptor())) {
        return error;
    }
    if (const int error = copyAttributes(source.status, copy.descriptor())) {
        return error;
    }
    return copy.finish();
}

/// What is not a directory.
int copySingle(const QString& from, const QString& to, const struct stat& status) {
    if (S_ISLNK(status.st_mode)) {
        return copyLink(AT_FDCWD, QFile::encodeName(from), AT_FDCWD, QFile::encodeName(to));
    }
    return copyFile(from, to);
}

} // namespace

void PosixFileManager::createDirectory(const QString& path) {
    if (const int error = makeDirectories(QDir::cleanPath(path))) {
        throw posixError(error, QStringLiteral("The folder “%1” could not be created").arg(path));
    }
}

bool PosixFileManager::itemExists(const QString& path) const {
    return statusOf(path).st_mode != 0;
}

bool PosixFileManager::isDirectory(const QString& path) const {
    return S_ISDIR(statusOf(path).st_mode);
}

bool PosixFileManager::isExecutableFile(const QString& path) const {
    return S_ISREG(statusOf(path).st_mode) &&
           ::access(QFile::encodeName(path).constData(), X_OK) == 0;
}

QString PosixFileManager::behindLinks(const QString& path) const {
    const QString real = QFileInfo(path).canonicalFilePath();
    return real.isEmpty() ? path : real;
}

void PosixFileManager::copyItem(const QString& from, const QString& to) {
    struct stat status {};
    if (::lstat(QFile::encodeName(from).constData(), &status) != 0) {
        throw posixError(errno, copyFailure(from, to));
    }
    if (S_ISDIR(status.st_mode)) {
        return TreeCopy(from, to).run();
    }
    if (!S_ISREG(status.st_mode) && !S_ISLNK(status.st_mode)) {
        throw notCopyable(from, to);
    }
    if (const int error = copySingle(from, to, status)) {
        throw posixError(error, copyFailure(from, to));
    }
}

void PosixFileManager::moveItem(const QString& from, const QString& to) {
    const int error = renameExclusively(QFile::encodeName(from), QFile::encodeName(to));
    if (error != 0) {
        throw posixError(error, QStringLiteral("“%1” could not be moved to “%2”").arg(from, to));
    }
}

void PosixFileManager::removeItem(const QString& path) {
    removeTree(path);
}

QStringList PosixFileManager::contentsOfDirectory(const QString& path) const {
    std::vector<QByteArray> names;
    // A name of its own, so that links to a directory count as the directory.
    if (const int error = listDirectory(AT_FDCWD, QFile::encodeName(path) + "/.", names)) {
        throw posixError(error, QStringLiteral("The folder “%1” could not be listed").arg(path));
    }
    QStringList contents;
    for (const QByteArray& name : names) {
        contents.append(QFile::decodeName(name));
    }
    return contents;
}

QByteArray PosixFileManager::readFile(const QString& path) const {
    OpenedFile opened = openForReading(path);
    QByteArray bytes;
    if (opened.error == 0) {
        opened.error = readToEnd(opened.file, pieceFor(opened.status), bytes);
    }
    if (opened.error != 0) {
        throw posixError(opened.error, QStringLiteral("“%1” could not be read").arg(path));
    }
    return bytes;
}

void PosixFileManager::writeFile(const QString& path, const QByteArray& bytes) {
    if (const int error = writeInPlace(QFile::encodeName(path), bytes)) {
        throw posixError(error, QStringLiteral("“%1” could not be written").arg(path));
    }
}

} // namespace orvanta
