// SPDX-License-Identifier: MIT
#include "platform/posix/content_digest.h"

#include "base/platform_error.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>

namespace orvanta {
namespace {

/// The worker may still be at it when the process ends, so the library does not clean up then.
bool initialised() {
    static const bool isDone = OPENSSL_init_crypto(OPENSSL_INIT_NO_ATEXIT, nullptr) == 1;
    return isDone;
}

} // namespace

QByteArray LibcryptoContentDigest::sha256(const QByteArray& bytes) const {
    QByteArray digest(EVP_MAX_MD_SIZE, '\0');
    unsigned int size = 0;
    if (!initialised() || EVP_Digest(bytes.constData(), static_cast<std::size_t>(bytes.size()),
                                     reinterpret_cast<unsigned char*>(digest.data()), &size,
                                     EVP_sha256(), nullptr) != 1) {
        throw PlatformError(QStringLiteral("libcrypto"), 1,
                            QStringLiteral("The SHA-256 digest could not be computed."));
    }
    digest.truncate(size);
    return digest.toHex();
}

} // namespace orvanta
