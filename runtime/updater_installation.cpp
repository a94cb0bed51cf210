// SPDX-License-Identifier: MIT
#include "runtime/mac_runtime_updater.h"

#include "base/platform_error.h"
#include "orvanta_build_constants.h"
#include "platform/background_work.h"
#include "platform/content_digest.h"
#include "platform/file_manager.h"
#include "platform/http_session.h"
#include "platform/identifiers.h"
#include "runtime/archive_installation.h"
#include "runtime/background_result.h"
#include "runtime/placement.h"

namespace orvanta {

namespace {

MacRuntimeMetadata installedMetadata(const QString& version, const QString& now) {
    return {.version = version,
            .platform = QString::fromLatin1(build::kPlatform),
            .arch = QString::fromLatin1(build::kArch),
            .builtAt = now,
            .nodeVersion = std::nullopt,
            .cloudflaredVersion = std::nullopt};
}

std::optional<QString> problemOf(ArchivePlacement placement) {
    switch (placement) {
    case ArchivePlacement::noRuntimeFound:
        return QStringLiteral("Runtime archive does not contain local-server and node-runtime.");
    case ArchivePlacement::notValid:
        return QStringLiteral("Runtime archive was extracted but failed validation.");
    case ArchivePlacement::placed:
        break;
    }
    return std::nullopt;
}

} // namespace

Task<MacRuntimeUpdateResult> MacRuntimeUpdater::applyAvailableUpdate() {
    auto fetch = fetchOffer();
    const Offer offer = co_await std::move(fetch);
    if (offer.failure) {
        co_return *offer.failure;
    }
    if (!isNewer(offer.manifest.version, offer.state)) {
        co_return endedCurrent(offer.state);
    }
    auto installation = applyManifest(offer.manifest, offer.settings, Wanted::ifStillNewer);
    co_return co_await std::move(installation);
}

MacRuntimeUpdateResult MacRuntimeUpdater::endedCurrent(const MacRuntimeCurrentState& state) {
    m_availableVersion = std::nullopt;
    return ended(true, currentLine(state));
}

Task<MacRuntimeUpdateResult> MacRuntimeUpdater::applyManifest(MacRuntimeManifest manifest,
                                                              MacRuntimeUpdateSettings settings) {
    auto installation = applyManifest(manifest, settings, Wanted::inAnyCase);
    co_return co_await std::move(installation);
}

Task<MacRuntimeUpdateResult> MacRuntimeUpdater::applyManifest(MacRuntimeManifest manifest,
                                                              MacRuntimeUpdateSettings settings,
                                                              Wanted wanted) {
    const auto loaded = currentState();
    if (!loaded) {
        co_return ended(false, QStringLiteral("Could not load runtime state."));
    }
    if (!isAbsoluteUrl(manifest.archiveUrl)) {
        co_return ended(false, QStringLiteral("Runtime archive URL is invalid."));
    }
    const HeldState held = hold(*loaded);
    std::optional<MacRuntimeUpdateResult> end;
    try {
        auto installation = install(manifest, settings.channel, held, wanted);
        end = co_await std::move(installation);
    } catch (const PlatformError& error) {
        end = ended(false, QStringLiteral("Runtime update failed: ") + error.description());
    }
    if (end) {
        co_return *end;
    }
    auto removal = removeStaging();
    co_await std::move(removal);
    co_return ended(true, QStringLiteral("Updated to ") + manifest.version);
}

Task<std::optional<MacRuntimeUpdateResult>> MacRuntimeUpdater::install(MacRuntimeManifest manifest,
                                                                       QString channel,
                                                                       HeldState held,
                                                                       Wanted wanted) {
    const auto session = m_platform.httpSessions.sharedSession();
    auto exchange = session->get(manifest.archiveUrl);
    // The status is not looked at: an error page has another digest.
    HttpOutcome outcome = co_await std::move(exchange);
    HttpReply reply = outcome.takeReply();
    auto comparison = hasDigest(reply.body, manifest.sha256);
    const bool isIntact = co_await std::move(comparison);
    if (!isIntact) {
        co_return ended(false,
                        QStringLiteral("Runtime archive checksum did not match the manifest."));
    }
    auto turn = awaitTurnToPlace(manifest.version);
    co_await std::move(turn);
    if (becameCurrent(manifest.version, held) &&
        isValidRuntimeRoot(m_paths.version(manifest.version))) {
        // It may be running by now.
        co_return std::nullopt;
    }
    if (isOvertaken(manifest.version, held, wanted)) {
        co_return endedCurrent(caughtUp(held));
    }
    const Placement placement(*this, manifest.version);
    auto placing = place(manifest, std::move(reply.body));
    const auto problem = problemOf(co_await std::move(placing));
    if (problem) {
        co_return ended(false, *problem);
    }
    if (isOvertaken(manifest.version, held, wanted)) {
        const MacRuntimeUpdateResult end = endedCurrent(caughtUp(held));
        auto removal = removeStaging();
        co_await std::move(removal);
        co_return end;
    }
    switchTo(manifest.version, channel, held);
    co_return std::nullopt;
}

bool MacRuntimeUpdater::becameCurrent(const QString& version, const HeldState& held) const {
    return held.state.currentVersion != version && caughtUp(held).currentVersion == version;
}

bool MacRuntimeUpdater::isOvertaken(const QString& version, const HeldState& held,
                                    Wanted wanted) const {
    return wanted == Wanted::ifStillNewer && !becameCurrent(version, held) &&
           !isNewer(version, caughtUp(held));
}

Task<bool> MacRuntimeUpdater::hasDigest(QByteArray archive, QString sha256) {
    std::function<QByteArray()> compute = [&digest = m_platform.contentDigest, archive] {
        return digest.sha256(archive);
    };
    auto computation = computeInBackground(m_platform.backgroundWork, std::move(compute));
    const QByteArray actual = co_await std::move(computation);
    co_return sha256.compare(QLatin1String(actual), Qt::CaseInsensitive) == 0;
}

Task<ArchivePlacement> MacRuntimeUpdater::place(MacRuntimeManifest manifest, QByteArray archive) {
    requireDirectoryName(manifest.version);
    ArchiveInstallation installation{
        .archive = std::move(archive),
        .work = m_paths.work(manifest.version, m_platform.identifiers.uuid()),
        .versions = m_paths.versions(),
        .destination = m_paths.version(manifest.version),
        .metadata = installedMetadata(manifest.version, timestamp()).encode()};
    std::function<ArchivePlacement()> job = [&files = m_platform.files,
                                             &tool = m_platform.archiveTool,
                                             installation = std::move(installation)]() mutable {
        return placeArchive(files, tool, std::move(installation));
    };
    auto placing = computeInBackground(m_platform.backgroundWork, std::move(job));
    co_return co_await std::move(placing);
}

void MacRuntimeUpdater::switchTo(const QString& version, const QString& channel,
                                 const HeldState& held) {
    MacRuntimeCurrentState state = caughtUp(held);
    if (!becameCurrent(version, held)) {
        state.previousVersion = state.currentVersion;
    }
    state.currentVersion = version;
    state.channel = channel;
    state.availableVersion = std::nullopt;
    state.updatedAt = timestamp();
    state.pendingHealthCheck = true;
    writeIfPossible(state);
    m_availableVersion = std::nullopt;
}

Task<> MacRuntimeUpdater::removeStaging() {
    std::function<void()> job = [&files = m_platform.files, staging = m_paths.staging()] {
        files.removeItem(staging);
    };
    try {
        auto removal = m_platform.backgroundWork.run(std::move(job));
        co_await std::move(removal);
    } catch (const PlatformError&) {
        // Left-overs cost room and nothing else; the next installation tries again.
    }
}

} // namespace orvanta
