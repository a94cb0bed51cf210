// SPDX-License-Identifier: MIT
#pragma once

#include "platform/content_digest.h"

namespace orvanta {

/// The digests of libcrypto, which uses the processor's own instructions for them.
class LibcryptoContentDigest : public ContentDigest {
public:
    QByteArray sha256(const QByteArray& bytes) const override;
};

} // namespace orvanta
