// SPDX-License-Identifier: MIT
#pragma once

#include "platform/posix/file_descriptor.h"

#include <QByteArray>

#include <sys/types.h>

#include <vector>

namespace orvanta {

/// A directory in a tree, by descriptor, that can be left for one below it and for the one it was
/// entered from. Holds one descriptor however deep the tree is, and never follows a link. The calls
/// return 0 or the system's error number.
class TreePosition {
public:
    /// At the directory `top`, which is open.
    explicit TreePosition(FileDescriptor top) : m_directory(std::move(top)) {}

    int directory() const { return m_directory.get(); }
    bool isAtTop() const { return m_above.empty(); }

    int enter(const QByteArray& name);

    /// Back to the directory above, if it is still the one that `enter` came from (else ESTALE).
    /// `left` gets the directory that was left. Not at the top.
    int leave(FileDescriptor& left);

private:
    struct Identity {
        dev_t device;
        ino_t number;
    };

    FileDescriptor m_directory;
    std::vector<Identity> m_above;
};

/// The names in the directory `name` in `directory` without "." and "..", in the file system's
/// order.
int listDirectory(int directory, const QByteArray& name, std::vector<QByteArray>& names);

/// An open descriptor of the directory `name` in `directory`; links are not followed.
int openDirectory(int directory, const QByteArray& name, FileDescriptor& opened);

} // namespace orvanta
