// SPDX-License-Identifier: MIT
#include "platform/linux/content_digest.h"

namespace orvanta {

QByteArray LoadedContentDigest::sha256(const QByteArray& bytes) const {
    using Entry = const ContentDigest* (*)();
    const auto entry = reinterpret_cast<Entry>(m_module.function("orvantaContentDigest"));
    return entry()->sha256(bytes);
}

} // namespace orvanta
