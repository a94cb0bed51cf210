// SPDX-License-Identifier: MIT
#pragma once

#include <QTemporaryDir>

namespace orvanta {

/// A name server that takes every question and answers none; the only one there is for this
/// process, in a network of its own. To be made before any thread; never undone.
class SilentNameServer {
public:
    /// False when this user may have no network of its own.
    bool start();
    /// Whether a question has come since the last call.
    bool wasAsked() const;

private:
    bool cover(const char* systemFile, const QByteArray& contents) const;

    QTemporaryDir m_folder;
    int m_socket = -1;
};

} // namespace orvanta
