// SPDX-License-Identifier: MIT
#pragma once

#include "platform/content_digest.h"
#include "platform/linux/program_module.h"

namespace orvanta {

/// Computes by a module that is loaded when it is first needed, which is for an installation.
class LoadedContentDigest : public ContentDigest {
public:
    QByteArray sha256(const QByteArray& bytes) const override;

private:
    const ProgramModule m_module{QStringLiteral("digest")};
};

} // namespace orvanta
