// SPDX-License-Identifier: MIT
#include "platform/posix/content_digest.h"

#include "base/platform_error.h"
#include "platform/posix/desktop_services.h"

#include <openssl/evp.h>

namespace orvanta {

QByteArray LibcryptoContentDigest::sha256(const QByteArray& bytes) const {
    QByteArray digest(EVP_MAX_MD_SIZE, '\0');
    unsigned int size = 0;
    if (EVP_Digest(bytes.constData(), static_cast<std::size_t>(bytes.size()),
                   reinterpret_cast<unsigned char*>(digest.data()), &size, EVP_sha256(),
                   nullptr) != 1) {
        throw PlatformError(QStringLiteral("libcrypto"), 1,
                            QStringLiteral("The SHA-256 digest could not be computed."));
    }
    digest.truncate(size);
    return digest.toHex();
}

std::unique_ptr<ContentDigest> makeContentDigest() {
    return std::make_unique<LibcryptoContentDigest>();
}

} // namespace orvanta
