// SPDX-License-Identifier: MIT
#pragma once

#include "base/platform_error.h"
#include "platform/posix/file_descriptor.h"
#include "platform/posix/tree_position.h"

#include <QString>

#include <sys/stat.h>

#include <vector>

namespace orvanta {

/// Copies a directory with all below it: contents, modes, links as links, times of modification.
/// Files share their blocks with the originals where the file system can do that.
class TreeCopy {
public:
    /// Opens `from` and makes the directory `to`, which must not exist. Throws `PlatformError`.
    TreeCopy(const QString& from, const QString& to);
    TreeCopy(const TreeCopy&) = delete;
    TreeCopy& operator=(const TreeCopy&) = delete;

    /// To be called once. Throws `PlatformError` at the first item that cannot be copied, and names
    /// it.
    void run();

private:
    struct Level {
        QByteArray name;
        struct stat status {};
        std::vector<QByteArray> remaining; ///< names still to be copied
    };

    FileDescriptor openSource() const;
    FileDescriptor makeTop();
    void copyEntry(const QByteArray& name);
    void copyFile(const QByteArray& name);
    FileDescriptor createFile(int source, const QByteArray& name);
    void enter(const QByteArray& name);
    void leave();
    void list(const QByteArray& name);

    QString below(const QString& top) const;
    void require(int error) const;
    void requireCall(int returned) const;

    const QString m_from;
    const QString m_to;
    std::vector<Level> m_levels;
    QByteArray m_entry; ///< the one at hand, for failures; empty when it is the directory
    TreePosition m_source;
    TreePosition m_copy;
    struct stat m_top {}; ///< of the copy
    bool m_clones = true;
};

/// Copies a symbolic link as such, with its times. 0 or the system's error number.
int copyLink(int fromDirectory, const QByteArray& from, int toDirectory, const QByteArray& to);

/// “a” could not be copied to “b”
QString copyFailure(const QString& from, const QString& to);

/// The failure for what is neither a file nor a directory nor a link.
PlatformError notCopyable(const QString& from, const QString& to);

} // namespace orvanta
