// SPDX-License-Identifier: MIT
#include "platform/linux/program_module.h"
#include "platform/posix/desktop_services.h"

namespace orvanta {
namespace {

/// Computes by a library that is loaded when it is first needed, which is for an installation.
class LoadedContentDigest : public ContentDigest {
public:
    QByteArray sha256(const QByteArray& bytes) const override {
        using Entry = const ContentDigest* (*)();
        const auto entry = reinterpret_cast<Entry>(m_module.function("orvantaContentDigest"));
        return entry()->sha256(bytes);
    }

private:
    const ProgramModule m_module{QStringLiteral("digest")};
};

} // namespace

std::unique_ptr<ContentDigest> makeContentDigest() {
    return std::make_unique<LoadedContentDigest>();
}

} // namespace orvanta
