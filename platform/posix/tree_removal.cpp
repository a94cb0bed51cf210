// SPDX-License-Identifier: MIT
#include "platform/posix/tree_removal.h"

#include "platform/posix/posix_error.h"
#include "platform/posix/tree_position.h"

#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <vector>

namespace orvanta {
namespace {

/// What the owner of a directory needs to list and to empty it.
constexpr mode_t kRemovable = 0700;

int resultOf(int returned) {
    return returned < 0 ? errno : 0;
}

/// Removes what is not a directory. The two kinds of answer to an attempt on a directory are
/// EISDIR, and EPERM where the system goes by the letter of the standard.
int removeFile(int directory, const QByteArray& name) {
    const int error = resultOf(::unlinkat(directory, name.constData(), 0));
    struct stat status {};
    if (error == EPERM &&
        ::fstatat(directory, name.constData(), &status, AT_SYMLINK_NOFOLLOW) == 0 &&
        S_ISDIR(status.st_mode)) {
        return EISDIR;
    }
    return error;
}

int makeRemovable(int directory) {
    struct stat status {};
    if (::fstat(directory, &status) != 0) {
        return errno;
    }
    if ((status.st_mode & kRemovable) == kRemovable) {
        return 0;
    }
    return resultOf(::fchmod(directory, (status.st_mode & 0777) | kRemovable));
}

/// A directory that may not be read must become so before it can be opened.
template <typename Open>
int openRemovable(int directory, const QByteArray& name, const Open& open) {
    const int error = open();
    if (error != EACCES) {
        return error;
    }
    const int refusal =
        resultOf(::fchmodat(directory, name.constData(), kRemovable, AT_SYMLINK_NOFOLLOW));
    return refusal != 0 ? refusal : open();
}

class Emptying {
public:
    explicit Emptying(FileDescriptor top) : m_position(std::move(top)) {}

    int run() {
        int error = list(QByteArray());
        while (error == 0 && !isDone()) {
            error = step();
        }
        return error;
    }

    /// The path, below the top, of the item at hand.
    QByteArray item() const {
        QByteArray path;
        for (std::size_t i = 1; i < m_levels.size(); ++i) {
            path += '/' + m_levels[i].name;
        }
        return m_entry.isEmpty() ? path : path + '/' + m_entry;
    }

private:
    struct Level {
        QByteArray name;
        std::vector<QByteArray> remaining;
    };

    bool isDone() const { return m_position.isAtTop() && m_levels.back().remaining.empty(); }

    int step() {
        std::vector<QByteArray>& remaining = m_levels.back().remaining;
        if (remaining.empty()) {
            return removeDirectory();
        }
        m_entry = remaining.back();
        remaining.pop_back();
        const int error = removeFile(m_position.directory(), m_entry);
        return error == EISDIR ? enter() : error;
    }

    int enter() {
        const int error = openRemovable(m_position.directory(), m_entry,
                                        [this] { return m_position.enter(m_entry); });
        return error != 0 ? error : list(m_entry);
    }

    int list(const QByteArray& name) {
        m_levels.push_back({name, {}});
        m_entry.clear();
        const int error = makeRemovable(m_position.directory());
        return error != 0 ? error
                          : listDirectory(m_position.directory(), ".", m_levels.back().remaining);
    }

    int removeDirectory() {
        m_entry = m_levels.back().name;
        m_levels.pop_back();
        FileDescriptor emptied;
        if (const int error = m_position.leave(emptied)) {
            return error;
        }
        return resultOf(::unlinkat(m_position.directory(), m_entry.constData(), AT_REMOVEDIR));
    }

    TreePosition m_position;
    std::vector<Level> m_levels;
    QByteArray m_entry; ///< empty when it is the directory
};

void require(int error, const QString& path) {
    if (error != 0) {
        throw posixError(error, QStringLiteral("“%1” could not be removed").arg(path));
    }
}

/// Names that stand for a directory with another name, which would be emptied in their stead.
bool isNameless(const QByteArray& path) {
    const QByteArray name = path.mid(path.lastIndexOf('/') + 1);
    return name == "." || name == ".." || path == "/";
}

QByteArray withoutTrailingSlashes(QByteArray path) {
    while (path.size() > 1 && path.endsWith('/')) {
        path.chop(1);
    }
    return path;
}

void removeDirectoryTree(const QByteArray& path) {
    FileDescriptor top;
    const QString shown = QFile::decodeName(path);
    require(openRemovable(AT_FDCWD, path, [&] { return openDirectory(AT_FDCWD, path, top); }),
            shown);
    Emptying emptying(std::move(top));
    const int error = emptying.run();
    require(error, shown + QFile::decodeName(emptying.item()));
    require(resultOf(::rmdir(path.constData())), shown);
}

} // namespace

void removeTree(const QString& path) {
    // A slash at the end would make the system follow a link.
    const QByteArray bytes = withoutTrailingSlashes(QFile::encodeName(path));
    require(isNameless(bytes) ? EINVAL : 0, path);
    const int error = removeFile(AT_FDCWD, bytes);
    if (error == EISDIR) {
        return removeDirectoryTree(bytes);
    }
    require(error, path);
}

} // namespace orvanta
