// SPDX-License-Identifier: MIT
#include "bench/install_stall/store_exercise.h"

#include "base/platform_error.h"
#include "platform/main_queue.h"
#include "runtime/mac_runtime_updater.h"

#include <QDir>

namespace orvanta::bench {

namespace {

void require(bool condition, const QString& otherwise) {
    if (!condition) {
        throw PlatformError(QStringLiteral("install_stall"), 1, otherwise);
    }
}

MacRuntimeLaunchConfiguration running(const QString& version) {
    MacRuntimeLaunchConfiguration configuration;
    configuration.version = version;
    configuration.isLegacy = false;
    return configuration;
}

} // namespace

Task<> exerciseStore(QString resourceRoot, QString stateRoot, QString baseUrl, Platform& platform,
                     Heartbeat& heartbeat, Measurements& measurements) {
    MacRuntimeUpdater updater(resourceRoot, stateRoot, platform);
    MacRuntimeUpdateSettings settings = updater.loadSettings();
    settings.manifestBaseUrl = baseUrl;

    heartbeat.begin();
    auto rest = platform.mainQueue.sleep(Seconds(1));
    co_await std::move(rest);
    measurements[QStringLiteral("1 idle")].push_back(heartbeat.end());

    heartbeat.begin();
    auto seeding = updater.seedBootstrapRuntime(settings.channel);
    co_await std::move(seeding);
    measurements[QStringLiteral("2 seed")].push_back(heartbeat.end());

    auto fetch = updater.fetchManifest(settings);
    auto manifest = co_await std::move(fetch);
    require(manifest.has_value(), updater.lastStatus().value_or(QString()));
    for (const char* version : {"2.0.0", "3.0.0"}) {
        manifest->version = QLatin1String(version);
        heartbeat.begin();
        auto installation = updater.applyManifest(*manifest, settings);
        const MacRuntimeUpdateResult result = co_await std::move(installation);
        measurements[QStringLiteral("3 install")].push_back(heartbeat.end());
        require(result.succeeded, result.message);
    }

    heartbeat.begin();
    updater.markRuntimeHealthy(running(manifest->version));
    measurements[QStringLiteral("4 prune")].push_back(heartbeat.end());
    const QDir versions(stateRoot + QStringLiteral("/runtime/versions"));
    require(versions.entryList(QDir::Dirs | QDir::NoDotAndDotDot).size() == 2,
            QStringLiteral("nothing was pruned"));
}

} // namespace orvanta::bench
