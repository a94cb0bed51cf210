// SPDX-License-Identifier: MIT
#include "runtime/mac_runtime_updater.h"

#include "base/json.h"
#include "platform/http_session.h"

namespace orvanta {

namespace {

/// In bytes. Manifests have less than a thousand; they are parsed on the main thread.
constexpr qsizetype kLargestManifest = 1024 * 1024;

} // namespace

Task<std::optional<MacRuntimeManifest>>
MacRuntimeUpdater::fetchManifest(MacRuntimeUpdateSettings settings) {
    const QString address = manifestAddress(settings);
    if (!isAbsoluteUrl(address)) {
        m_lastStatus = QStringLiteral("Runtime manifest URL is invalid.");
        co_return std::nullopt;
    }
    if (!isWebAddress(address)) {
        // Whatever were there, it would not come as a reply with a status.
        m_lastStatus = QStringLiteral("Runtime manifest was not available.");
        co_return std::nullopt;
    }
    const auto session = m_platform.httpSessions.sharedSession();
    try {
        auto exchange = session->get(address, kLargestManifest);
        HttpOutcome outcome = co_await std::move(exchange);
        co_return vettedManifest(outcome.takeReply());
    } catch (const PlatformError& error) {
        m_lastStatus = QStringLiteral("Runtime manifest check failed: ") + error.description();
    }
    co_return std::nullopt;
}

std::optional<MacRuntimeManifest> MacRuntimeUpdater::vettedManifest(const HttpReply& reply) {
    if (reply.status != 200) {
        m_lastStatus = QStringLiteral("Runtime manifest was not available.");
        return std::nullopt;
    }
    auto manifest = MacRuntimeManifest::decode(reply.body);
    if (!manifest.matchesThisApp()) {
        m_lastStatus = QStringLiteral("Runtime manifest does not match this app.");
        return std::nullopt;
    }
    return manifest;
}

Task<MacRuntimeUpdater::Offer> MacRuntimeUpdater::fetchOffer() {
    Offer offer;
    offer.settings = loadSettings();
    if (!offer.settings.enabled) {
        offer.failure = ended(false, QStringLiteral("Runtime updater disabled in config.json."));
        co_return offer;
    }
    try {
        auto load = loadOrSeed(offer.settings.channel);
        offer.state = co_await std::move(load);
    } catch (const PlatformError& error) {
        offer.failure = ended(false, QStringLiteral("Could not seed the runtime store: ") +
                                         error.description());
        co_return offer;
    }
    const HeldState held = hold(offer.state);
    auto fetch = fetchManifest(offer.settings);
    const auto manifest = co_await std::move(fetch);
    if (!manifest) {
        const QString unknown = QStringLiteral("Could not fetch runtime manifest.");
        offer.failure = ended(false, m_lastStatus.value_or(unknown));
        co_return offer;
    }
    offer.state = caughtUp(held);
    offer.manifest = *manifest;
    co_return offer;
}

std::optional<QString> MacRuntimeUpdater::recordCheck(const MacRuntimeManifest& manifest,
                                                      MacRuntimeCurrentState state) {
    const auto available =
        isNewer(manifest.version, state) ? std::optional(manifest.version) : std::nullopt;
    state.lastCheckedAt = timestamp();
    state.availableVersion = available;
    writeIfPossible(state);
    m_availableVersion = available;
    return available;
}

Task<MacRuntimeUpdateResult> MacRuntimeUpdater::checkForUpdates() {
    auto fetch = fetchOffer();
    const Offer offer = co_await std::move(fetch);
    if (offer.failure) {
        co_return *offer.failure;
    }
    const auto available = recordCheck(offer.manifest, offer.state);
    co_return ended(true, available ? QStringLiteral("Update available: ") + *available
                                    : currentLine(offer.state));
}

} // namespace orvanta
