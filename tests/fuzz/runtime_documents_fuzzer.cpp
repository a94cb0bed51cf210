// SPDX-License-Identifier: MIT
// The two documents that come with a runtime, runtime.json and the manifest of its channel; every
// input is read as both.
#include "fuzz/fuzz_input.h"
#include "fuzz/fuzz_target.h"
#include "fuzz/plain_record.h"
#include "fuzz/record_round_trip.h"
#include "orvanta_build_constants.h"
#include "runtime/runtime_manifest.h"
#include "runtime/runtime_records.h"
#include "runtime/store_files.h"

namespace orvanta::fuzz {
namespace {

std::optional<MacRuntimeMetadata> expectedMetadata(const QByteArray& document) {
    PlainRecord record(document);
    const MacRuntimeMetadata metadata{
        record.requiredText(u"version"), record.requiredText(u"platform"),
        record.requiredText(u"arch"),    record.text(u"builtAt"),
        record.text(u"nodeVersion"),     record.text(u"cloudflaredVersion")};
    return record.isValid() ? std::optional(metadata) : std::nullopt;
}

std::optional<MacRuntimeManifest> expectedManifest(const QByteArray& document) {
    PlainRecord record(document);
    const MacRuntimeManifest manifest{
        record.requiredText(u"version"),    record.text(u"channel"),
        record.requiredText(u"platform"),   record.requiredText(u"arch"),
        record.requiredText(u"archiveUrl"), record.requiredText(u"sha256"),
        record.text(u"publishedAt"),        record.text(u"notesUrl"),
        record.text(u"minHostVersion"),     record.text(u"minRuntimeVersion"),
        record.text(u"requiredReason")};
    return record.isValid() ? std::optional(manifest) : std::nullopt;
}

bool isFor(const QString& text, const char* constant) {
    return text.toCaseFolded() == QString::fromLatin1(constant).toCaseFolded();
}

/// An accepted version names one directory of the store and nothing outside it.
void tryDirectory(const QString& version) {
    const QString name = directoryName(version);
    require(!name.contains(u'/') && !name.contains(u':') && name.size() == version.size(),
            "only separators are replaced");
    require(isSafeDirectoryName(name) ==
                (!name.isEmpty() && name != QStringLiteral(".") && name != QStringLiteral("..") &&
                 !name.contains(QChar::Null)),
            "a safe name is that of a directory inside the store, and no other is");
}

void tryMatch(const MacRuntimeManifest& manifest) {
    require(manifest.matchesThisApp() ==
                (isFor(manifest.platform, build::kPlatform) && isFor(manifest.arch, build::kArch) &&
                 !manifest.version.isEmpty() && !manifest.archiveUrl.isEmpty()),
            "a manifest matches when it is for this system and offers something");
}

/// A manifest whose members the input picks, so that it often matches.
MacRuntimeManifest pickedManifest(const QByteArray& input) {
    const auto pick = [&input](int index, std::initializer_list<const char*> texts) {
        return pickedText(input, index, texts).value_or(QString());
    };
    MacRuntimeManifest manifest;
    manifest.version = pick(0, {"1", "", "0"});
    manifest.platform = pick(1, {"linux", "Linux", "macos", "MACOS", ""});
    manifest.arch = pick(2, {"x86_64", "X86_64", "arm64", "ARM64", ""});
    manifest.archiveUrl = pick(3, {"a", "", "b"});
    return manifest;
}

void tryManifest(const MacRuntimeManifest& manifest) {
    tryMatch(manifest);
    require(!isWebAddress(manifest.archiveUrl) || isAbsoluteUrl(manifest.archiveUrl),
            "a web address is absolute");
    require(!isWebAddress(manifest.archiveUrl) ||
                manifest.archiveUrl.startsWith(QStringLiteral("http"), Qt::CaseInsensitive),
            "a web address says so");
    tryDirectory(manifest.version);
    MacRuntimeUpdateSettings settings;
    settings.manifestBaseUrl = manifest.archiveUrl;
    settings.channel = manifest.channel.value_or(QString());
    QString base = manifest.archiveUrl;
    while (base.endsWith(u'/')) {
        base.chop(1);
    }
    require(manifestAddress(settings) == QStringLiteral("%1/%2/%3/%4/manifest.json")
                                             .arg(base, settings.channel,
                                                  QLatin1String(build::kPlatform),
                                                  QLatin1String(build::kArch)),
            "the address is base, channel, platform and processor");
}

} // namespace

void tryInput(const QByteArray& input) {
    const auto metadata = decodedIfPossible<MacRuntimeMetadata>(input);
    require(metadata == expectedMetadata(input), "the metadata are read strictly and completely");
    if (metadata) {
        tryRoundTrip(*metadata);
    }
    const auto manifest = decodedIfPossible<MacRuntimeManifest>(input);
    require(manifest == expectedManifest(input), "the manifest is read strictly and completely");
    if (manifest) {
        tryManifest(*manifest);
    }
    tryMatch(pickedManifest(input));
}

} // namespace orvanta::fuzz
