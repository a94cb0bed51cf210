// SPDX-License-Identifier: MIT
#pragma once

#include "platform/posix/file_descriptor.h"

#include <QString>

namespace orvanta {

class EnvironmentVariables;

/// Where this user's lock belongs: the session's run-time directory ($XDG_RUNTIME_DIR) when it is
/// an absolute path to a directory, else `stateRoot`.
QString instanceLockDirectory(const EnvironmentVariables& variables, const QString& stateRoot);

/// Keeps a second instance from running beside this one. Held until destruction or the end of the
/// process, however that comes; the file itself stays, because removing it would let two instances
/// hold two files of one name. Children do not inherit it.
class InstanceLock {
public:
    /// Creates `directory`, if needed, and the lock in it. Throws `PlatformError` when the lock
    /// can be neither taken nor found taken.
    explicit InstanceLock(const QString& directory);

    /// False when another process holds it.
    bool isHeld() const { return m_file.isOpen(); }

private:
    void writeProcessId();

    FileDescriptor m_file;
};

} // namespace orvanta
