// SPDX-License-Identifier: MIT
#include "integration/crash_points/store_process.h"

#include "base/platform_error.h"

namespace orvanta {
namespace {

struct Outcome {
    bool succeeded = false;
    QString message = QStringLiteral("(has not ended)");
};

Task<> observe(Task<MacRuntimeUpdateResult> task, std::shared_ptr<Outcome> outcome) {
    try {
        const MacRuntimeUpdateResult result = co_await std::move(task);
        *outcome = {result.succeeded, result.message};
    } catch (const TaskAbandoned&) {
        // The message says so.
    }
}

Task<> observe(Task<MacRuntimeLaunchConfiguration> task, std::shared_ptr<Outcome> outcome,
               std::shared_ptr<std::optional<MacRuntimeLaunchConfiguration>> launch) {
    try {
        *launch = co_await std::move(task);
        *outcome = {true, QString()};
    } catch (const PlatformError& error) {
        *outcome = {false, error.description()};
    } catch (const TaskAbandoned&) {
        // The message says so.
    }
}

Report reportOf(const Outcome& outcome) {
    return {outcome.succeeded, outcome.message.toStdString()};
}

} // namespace

StoreProcess::StoreProcess(const QString& resourceRoot, const QString& stateRoot, int start,
                           const QString& offered, const QByteArray& archive)
    : m_channel(offered) {
    constexpr int kMoreThanOneStartNeeds = 1000;
    m_world.identifiers.given = start * kMoreThanOneStartNeeds;
    m_channel.archive = archive;
    m_channel.sha256 = QString::fromLatin1(m_world.digest.sha256(archive));
    m_world.http.respond = [this](const fakes::FakeRequest& request) {
        return m_channel.reply(request);
    };
    Platform services{m_world.queue,
                      m_world.processes,
                      m_world.http,
                      m_world.serialQueues,
                      m_files,
                      m_world.locations,
                      m_world.environment,
                      m_world.wallClock,
                      m_world.loginItem,
                      m_world.browser,
                      m_world.application,
                      m_world.output,
                      m_world.background,
                      m_archives,
                      m_world.identifiers,
                      m_world.digest};
    m_updater = std::make_unique<MacRuntimeUpdater>(resourceRoot, stateRoot, services);
}

Report StoreProcess::resolve(std::optional<MacRuntimeLaunchConfiguration>* launch) {
    const auto outcome = std::make_shared<Outcome>();
    const auto chosen = std::make_shared<std::optional<MacRuntimeLaunchConfiguration>>();
    observe(m_updater->resolveLaunchConfiguration(), outcome, chosen);
    m_world.queue.runUntilIdle();
    if (launch != nullptr) {
        *launch = *chosen;
    }
    return reportOf(*outcome);
}

Report StoreProcess::finish(Task<MacRuntimeUpdateResult> task) {
    const auto outcome = std::make_shared<Outcome>();
    observe(std::move(task), outcome);
    m_world.queue.runUntilIdle();
    return reportOf(*outcome);
}

Report StoreProcess::update() {
    return finish(m_updater->applyAvailableUpdate());
}

Report StoreProcess::installAnyway() {
    return finish(m_updater->applyManifest(MacRuntimeManifest::decode(m_channel.manifest()),
                                           m_updater->loadSettings()));
}

Report StoreProcess::markHealthy() {
    m_updater->markRuntimeHealthy(m_updater->currentLaunchConfiguration());
    m_world.queue.runUntilIdle();
    return {true, {}};
}

Report StoreProcess::rollBack() {
    const MacRuntimeUpdateResult result = m_updater->rollback();
    return {result.succeeded, result.message.toStdString()};
}

} // namespace orvanta
