// SPDX-License-Identifier: MIT
#include "platform/posix/content_digest.h"

/// The one name of this module that is looked up.
extern "C" Q_DECL_EXPORT const orvanta::ContentDigest* orvantaContentDigest() {
    static const orvanta::LibcryptoContentDigest digest;
    return &digest;
}
