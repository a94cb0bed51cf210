// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

namespace orvanta {

/// Digests of whole contents. Any thread.
class ContentDigest {
public:
    virtual ~ContentDigest() = default;

    /// SHA-256 as 64 lower-case hexadecimal digits. Throws `PlatformError` when the library fails.
    virtual QByteArray sha256(const QByteArray& bytes) const = 0;
};

} // namespace orvanta
