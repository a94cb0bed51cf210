// SPDX-License-Identifier: MIT
#include "platform/posix/plain_tree.h"

#include "platform/posix/tree_position.h"

#include <QFile>

#include <climits>
#include <cstddef>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace orvanta {
namespace {

/// Whether a link `depth` folders below the top can only lead to something below the top. A ".."
/// behind a name is refused: that name may be a link that has already led upwards.
bool staysInside(const QByteArray& target, std::size_t depth) {
    if (target.isEmpty() || target.startsWith('/')) {
        return false;
    }
    bool hasName = false;
    for (const QByteArray& part : target.split('/')) {
        if (part == "..") {
            if (hasName || depth == 0) {
                return false;
            }
            --depth;
        } else if (!part.isEmpty() && part != ".") {
            hasName = true;
        }
    }
    return true;
}

class PlainTreeWalk {
public:
    explicit PlainTreeWalk(FileDescriptor top) : m_position(std::move(top)) {}

    bool run() {
        bool isPlain = list();
        while (isPlain && !(m_position.isAtTop() && m_remaining.back().empty())) {
            isPlain = step();
        }
        return isPlain;
    }

private:
    bool list() {
        m_remaining.emplace_back();
        return listDirectory(m_position.directory(), ".", m_remaining.back()) == 0;
    }

    bool step() {
        std::vector<QByteArray>& remaining = m_remaining.back();
        if (remaining.empty()) {
            FileDescriptor left;
            m_remaining.pop_back();
            return m_position.leave(left) == 0;
        }
        const QByteArray name = remaining.back();
        remaining.pop_back();
        return look(name);
    }

    bool look(const QByteArray& name) {
        struct stat status {};
        if (::fstatat(m_position.directory(), name.constData(), &status, AT_SYMLINK_NOFOLLOW) !=
            0) {
            return false;
        }
        if (S_ISDIR(status.st_mode)) {
            return m_position.enter(name) == 0 && list();
        }
        if (S_ISLNK(status.st_mode)) {
            return staysInside(targetOf(name), m_remaining.size() - 1);
        }
        return S_ISREG(status.st_mode) && (status.st_mode & (S_ISUID | S_ISGID)) == 0;
    }

    /// Empty when it cannot be read or is longer than any path may be.
    QByteArray targetOf(const QByteArray& name) const {
        QByteArray target(PATH_MAX, Qt::Uninitialized);
        const ssize_t length = ::readlinkat(m_position.directory(), name.constData(), target.data(),
                                            static_cast<std::size_t>(target.size()));
        target.resize(length > 0 && length < PATH_MAX ? length : 0);
        return target;
    }

    TreePosition m_position;
    std::vector<std::vector<QByteArray>> m_remaining; ///< names still to be looked at, by level
};

} // namespace

bool isPlainTree(const QString& path) {
    FileDescriptor top;
    return openDirectory(AT_FDCWD, QFile::encodeName(path), top) == 0 &&
           PlainTreeWalk(std::move(top)).run();
}

} // namespace orvanta
