// SPDX-License-Identifier: MIT
#pragma once

#include "integration/file_tree/file_tree_test.h"

#include <sys/wait.h>

namespace orvanta {

/// A record of `size` bytes.
inline QByteArray record(qsizetype size) {
    const QByteArray frame = "{\"version\" : \"\"}";
    return QByteArray(frame).insert(frame.size() - 2, QByteArray(size - frame.size(), 'v'));
}

class WriteFileTest : public FileTreeTest {
protected:
    std::string writeFailure(const QByteArray& name, const QByteArray& bytes) const {
        return failureOf([&] { PosixFileManager().writeFile(path(name), bytes); });
    }

    /// Runs `body` in a process of its own and returns its exit status.
    template <typename Body>
    static int inChild(const Body& body) {
        const pid_t child = ::fork();
        if (child == 0) {
            ::_exit(body());
        }
        int status = 0;
        EXPECT_EQ(::waitpid(child, &status, 0), child);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
};

} // namespace orvanta
