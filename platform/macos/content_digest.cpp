// SPDX-License-Identifier: MIT
#include "platform/macos/content_digest.h"

#include <CommonCrypto/CommonDigest.h>

#include <algorithm>

namespace orvanta {

QByteArray CommonCryptoContentDigest::sha256(const QByteArray& bytes) const {
    // The library counts in 32 bits.
    constexpr qsizetype kPiece = qsizetype{1} << 30;
    CC_SHA256_CTX context;
    CC_SHA256_Init(&context);
    for (qsizetype start = 0; start < bytes.size(); start += kPiece) {
        const qsizetype size = std::min(kPiece, bytes.size() - start);
        CC_SHA256_Update(&context, bytes.constData() + start, static_cast<CC_LONG>(size));
    }
    QByteArray digest(CC_SHA256_DIGEST_LENGTH, '\0');
    CC_SHA256_Final(reinterpret_cast<unsigned char*>(digest.data()), &context);
    return digest.toHex();
}

} // namespace orvanta
