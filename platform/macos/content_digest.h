// SPDX-License-Identifier: MIT
#pragma once

#include "platform/content_digest.h"

namespace orvanta {

/// The digests of the system's own library, which uses the processor's instructions for them.
class CommonCryptoContentDigest : public ContentDigest {
public:
    QByteArray sha256(const QByteArray& bytes) const override;
};

} // namespace orvanta
