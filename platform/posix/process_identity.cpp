// SPDX-License-Identifier: MIT
#include "platform/posix/process_identity.h"

#include <QCryptographicHash>

namespace orvanta {

/// In software, this one takes a seventh of what SHA-256 does; it is made before each start.
QByteArray digestOfEnvironment(const QByteArray& block) {
    return QCryptographicHash::hash(block, QCryptographicHash::Blake2b_256).toHex();
}

bool isSameProcess(const ProcessIdentity& now, const ProcessIdentity& remembered) {
    const bool isAnyExecutable = remembered.inode == 0;
    return isAnyExecutable ? now.pid == remembered.pid && now.startTime == remembered.startTime
                           : now == remembered;
}

} // namespace orvanta
