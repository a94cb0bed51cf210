// SPDX-License-Identifier: MIT
#pragma once

#include "base/task.h"
#include "platform/platform.h"
#include "runtime/archive_installation.h"
#include "runtime/mac_config_file.h"
#include "runtime/mac_runtime_launch_configuration.h"
#include "runtime/mac_runtime_update_result.h"
#include "runtime/runtime_manifest.h"
#include "runtime/runtime_records.h"
#include "runtime/store_files.h"

#include <QString>

#include <optional>
#include <vector>

namespace orvanta {

struct HttpReply;

/// The store of runtimes: knows where they are, which one to launch, and how to get a newer one.
/// Starts and stops nothing. One per manager; main thread only.
///
/// install: current = new, previous = old, health check pending -> healthy: confirmed, pruned
///                                                             \-> not: rollback, the two swap
///
/// The store's record, `current.json`, is read and written on the main thread, in one go; trees are
/// copied, unpacked and removed off it, one job at a time. The manager runs one user command at a
/// time, yet a launch or the status poll may come in while an operation waits: an operation that
/// goes on after a wait takes up what others have written to the record meanwhile.
class MacRuntimeUpdater {
public:
    /// Touches no file. Both roots are absolute paths without a trailing slash.
    MacRuntimeUpdater(QString resourceRoot, QString stateRoot, Platform& platform);
    MacRuntimeUpdater(const MacRuntimeUpdater&) = delete;
    MacRuntimeUpdater& operator=(const MacRuntimeUpdater&) = delete;

    // What is there (mac_runtime_updater.cpp)

    /// The update settings in force: config.json, corrected, with the environment's override. Read
    /// afresh on every call; never fails.
    MacRuntimeUpdateSettings loadSettings() const;

    /// The record of the runtime store; nothing when there is none that can be read.
    std::optional<MacRuntimeCurrentState> currentState() const;

    /// True when each of the five files a local server needs exists below `localServer`.
    bool hasRequiredLocalServerFiles(const QString& localServer) const;

    /// True for a directory with a complete local server and an executable node.
    bool isValidRuntimeRoot(const QString& root) const;

    /// The runtime that came with the application; not tested for completeness.
    MacRuntimeLaunchConfiguration shippedLaunchConfiguration() const;

    // The shipped runtime's way into the store (updater_seeding.cpp)

    /// A new store that holds the shipped runtime; the state that another operation has recorded
    /// meanwhile, if one has. Throws `PlatformError` when the shipped runtime is incomplete, has a
    /// version that cannot name a directory or cannot be copied; a record that cannot be written is
    /// no failure.
    Task<MacRuntimeCurrentState> seedBootstrapRuntime(QString channel);

    /// Makes the shipped runtime current if it is newer than `current`; gives the state that holds
    /// then. Throws `PlatformError` when it cannot be copied.
    Task<MacRuntimeCurrentState> promoteBundledRuntimeIfNewer(MacRuntimeCurrentState current);

    // The choice of a runtime (updater_resolution.cpp)

    /// The store's current version; nothing, with the reason in `lastStatus`, when it is
    /// incomplete, and nothing without a store.
    std::optional<MacRuntimeLaunchConfiguration> currentLaunchConfiguration();

    /// The runtime to launch now. Seeds the store, promotes the shipped runtime, fetches the
    /// manifest and installs a mandatory update as needed. Throws `PlatformError` when the store
    /// cannot be made or a mandatory update fails. Called at each start of the connector.
    Task<MacRuntimeLaunchConfiguration> resolveLaunchConfiguration();

    // What the channel offers (updater_manifest.cpp)

    /// Nothing on every failure, with the reason in `lastStatus`.
    Task<std::optional<MacRuntimeManifest>> fetchManifest(MacRuntimeUpdateSettings settings);

    /// Fetches the manifest and records when, and what newer version it offers. Installs nothing.
    Task<MacRuntimeUpdateResult> checkForUpdates();

    // Installation (updater_installation.cpp)

    /// Fetches the manifest and installs what it offers if that is newer.
    Task<MacRuntimeUpdateResult> applyAvailableUpdate();

    /// Installs what `manifest` offers, newer or not, and makes it current.
    Task<MacRuntimeUpdateResult> applyManifest(MacRuntimeManifest manifest,
                                               MacRuntimeUpdateSettings settings);

    // What becomes of a version (updater_health.cpp)

    /// Records that the version of `launched` (the store's current one for the shipped runtime or
    /// nothing) runs well, then prunes. Failures are silent.
    void markRuntimeHealthy(const std::optional<MacRuntimeLaunchConfiguration>& launched);

    /// Swaps the current and the previous version.
    MacRuntimeUpdateResult rollback();

    /// Removes everything from the versions directory but the versions that `state` names and
    /// `activeVersion`: out of there at once, off the disk later, since trees take seconds.
    /// Failures are silent.
    void cleanupOldVersions(const MacRuntimeCurrentState& state,
                            const std::optional<QString>& activeVersion);

    const QString& resourceRoot() const { return m_resourceRoot; }
    const QString& stateRoot() const { return m_stateRoot; }
    /// The outcome of the last operation, for people; nothing before the first.
    const std::optional<QString>& lastStatus() const { return m_lastStatus; }
    /// The newer version last offered; nothing when none is known.
    const std::optional<QString>& availableVersion() const { return m_availableVersion; }

private:
    /// Keeps a version directory that no record names yet from being pruned, and from being made
    /// by another operation at the same time.
    class Placement;
    /// Waits until no other operation is between the making of that version's directory and the
    /// record that names it. A `Placement` made at once after it is the only one of the version.
    Task<> awaitTurnToPlace(QString version);

    /// The state that an operation works on while it waits.
    struct HeldState {
        MacRuntimeCurrentState state;
        /// What the record said when the wait began; not `state` after a failed write.
        std::optional<MacRuntimeCurrentState> recorded;
    };
    HeldState hold(const MacRuntimeCurrentState& state) const;
    /// The state after the wait: what others have recorded meanwhile, otherwise the one held.
    MacRuntimeCurrentState caughtUp(const HeldState& held) const;

    /// Now, as "2026-11-15T21:37:51Z".
    QString timestamp() const;
    /// A record that cannot be written leaves the old one; the operation goes on.
    void writeIfPossible(const MacRuntimeCurrentState& state) const;
    /// The end of an operation: `message` becomes the last status.
    MacRuntimeUpdateResult ended(bool succeeded, const QString& message);
    static bool isNewer(const QString& version, const MacRuntimeCurrentState& state);
    static QString currentLine(const MacRuntimeCurrentState& state);

    bool isShippedRuntimeComplete() const;
    std::optional<MacRuntimeMetadata> shippedMetadata() const;
    Task<> ensureShippedVersion(MacRuntimeMetadata metadata);

    Task<MacRuntimeCurrentState> loadOrSeed(QString channel);
    Task<> checkAtStart(MacRuntimeUpdateSettings settings, MacRuntimeCurrentState state);
    Task<> installRequired(MacRuntimeManifest manifest, MacRuntimeUpdateSettings settings);
    std::optional<MacRuntimeManifest> vettedManifest(const HttpReply& reply);
    /// Stamps the record with the check; gives the newer version, if there is one.
    std::optional<QString> recordCheck(const MacRuntimeManifest& manifest,
                                       MacRuntimeCurrentState state);

    /// What both update operations begin with.
    struct Offer {
        MacRuntimeUpdateSettings settings;
        MacRuntimeCurrentState state;
        MacRuntimeManifest manifest;
        /// Set when there is no offer.
        std::optional<MacRuntimeUpdateResult> failure;
    };
    Task<Offer> fetchOffer();

    /// Whether to install what has come, or to switch to it once it is placed: others may have
    /// installed something meanwhile.
    enum class Wanted { inAnyCase, ifStillNewer };
    Task<MacRuntimeUpdateResult> applyManifest(MacRuntimeManifest manifest,
                                               MacRuntimeUpdateSettings settings, Wanted wanted);
    /// The end of an update that has nothing to install.
    MacRuntimeUpdateResult endedCurrent(const MacRuntimeCurrentState& state);
    /// Downloads, checks, places and switches; gives how it ended before that, if it did.
    Task<std::optional<MacRuntimeUpdateResult>>
    install(MacRuntimeManifest manifest, QString channel, HeldState held, Wanted wanted);
    /// True when another operation has switched to `version` since the wait began.
    bool becameCurrent(const QString& version, const HeldState& held) const;
    /// True when another operation has switched to something that `version` is not wanted over.
    bool isOvertaken(const QString& version, const HeldState& held, Wanted wanted) const;
    Task<bool> hasDigest(QByteArray archive, QString sha256);
    Task<ArchivePlacement> place(MacRuntimeManifest manifest, QByteArray archive);
    void switchTo(const QString& version, const QString& channel, const HeldState& held);
    Task<> removeStaging();
    /// Moves an entry of the versions directory to staging and adds where it is to `retired`;
    /// removes it there and then when it cannot be moved.
    void retire(const QString& name, QStringList& retired);
    void removeLater(const QStringList& retired);

    QString m_resourceRoot;
    QString m_stateRoot;
    StorePaths m_paths;
    Platform m_platform;
    std::optional<QString> m_lastStatus;
    std::optional<QString> m_availableVersion;
    /// The names of the version directories that operations are making.
    std::vector<QString> m_placing;
};

} // namespace orvanta
