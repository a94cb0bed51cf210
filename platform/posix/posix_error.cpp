// SPDX-License-Identifier: MIT
#include "platform/posix/posix_error.h"

#include <system_error>

namespace orvanta {

PlatformError posixError(int code, const QString& failure) {
    const std::string reason = std::generic_category().message(code);
    return PlatformError(
        QStringLiteral("posix"), code,
        QStringLiteral("%1: %2.").arg(failure, QString::fromLocal8Bit(reason.c_str())));
}

} // namespace orvanta
