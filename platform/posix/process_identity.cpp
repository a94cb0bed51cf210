// SPDX-License-Identifier: MIT
#include "platform/posix/process_identity.h"

#include <QCryptographicHash>

namespace orvanta {

QByteArray digestOfEnvironment(const QByteArray& block) {
    return QCryptographicHash::hash(block, QCryptographicHash::Sha256).toHex();
}

} // namespace orvanta
