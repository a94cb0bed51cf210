// SPDX-License-Identifier: MIT
#include "platform/linux/program_module.h"
#include "platform/posix/desktop_services.h"

namespace orvanta {
namespace {

const ContentDigest& load() {
    using Entry = ContentDigest* (*)();
    const auto entry =
        reinterpret_cast<Entry>(moduleFunction(QStringLiteral("digest"), "orvantaContentDigest"));
    return *entry();
}

/// Computes by a library that is loaded when it is first needed, which is for an installation.
class LoadedContentDigest : public ContentDigest {
public:
    QByteArray sha256(const QByteArray& bytes) const override {
        static const ContentDigest& digest = load();
        return digest.sha256(bytes);
    }
};

} // namespace

std::unique_ptr<ContentDigest> makeContentDigest() {
    return std::make_unique<LoadedContentDigest>();
}

} // namespace orvanta
