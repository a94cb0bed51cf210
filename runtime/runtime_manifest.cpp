// SPDX-License-Identifier: MIT
#include "runtime/runtime_manifest.h"

#include "base/json.h"
#include "orvanta_build_constants.h"

#include <QUrl>

namespace orvanta {

namespace {

bool isSame(const QString& text, const char* constant) {
    return text.compare(QLatin1String(constant), Qt::CaseInsensitive) == 0;
}

} // namespace

MacRuntimeManifest MacRuntimeManifest::decode(const QByteArray& bytes) {
    const auto json = JsonReader::parse(bytes);
    return {.version = json.requiredString("version"),
            .channel = json.string("channel"),
            .platform = json.requiredString("platform"),
            .arch = json.requiredString("arch"),
            .archiveUrl = json.requiredString("archiveUrl"),
            .sha256 = json.requiredString("sha256"),
            .publishedAt = json.string("publishedAt"),
            .notesUrl = json.string("notesUrl"),
            .minHostVersion = json.string("minHostVersion"),
            .minRuntimeVersion = json.string("minRuntimeVersion"),
            .requiredReason = json.string("requiredReason")};
}

bool MacRuntimeManifest::matchesThisApp() const {
    return isSame(platform, build::kPlatform) && isSame(arch, build::kArch) && !version.isEmpty() &&
           !archiveUrl.isEmpty();
}

QString trimmingTrailingSlashes(const QString& text) {
    qsizetype length = text.size();
    while (length > 0 && text.at(length - 1) == QLatin1Char('/')) {
        --length;
    }
    return text.left(length);
}

QString manifestAddress(const MacRuntimeUpdateSettings& settings) {
    return trimmingTrailingSlashes(settings.manifestBaseUrl) + QLatin1Char('/') + settings.channel +
           QLatin1Char('/') + QLatin1String(build::kPlatform) + QLatin1Char('/') +
           QLatin1String(build::kArch) + QStringLiteral("/manifest.json");
}

bool isAbsoluteUrl(const QString& text) {
    const QUrl url(text, QUrl::StrictMode);
    return url.isValid() && !url.isRelative();
}

bool isWebAddress(const QString& text) {
    const QString scheme = QUrl(text, QUrl::StrictMode).scheme();
    return isAbsoluteUrl(text) &&
           (scheme == QStringLiteral("http") || scheme == QStringLiteral("https"));
}

} // namespace orvanta
