// SPDX-License-Identifier: MIT
#include "connector/desktop_connector_manager.h"

#include "base/platform_error.h"
#include "orvanta_build_constants.h"
#include "platform/file_manager.h"
#include "platform/locations.h"
#include "platform/login_item.h"
#include "platform/main_queue.h"

namespace orvanta {

namespace {

HttpLimits httpLimits(const MacTraySettings& settings) {
    return {.idle = Seconds(settings.httpTimeoutSeconds),
            .whole = Seconds(settings.sessionResourceTimeoutSeconds())};
}

/// A build whose origin does not parse could never open a dashboard: it stops here.
QUrl defaultWebAppOrigin() {
    const QUrl origin(QString::fromLatin1(build::kWebAppOrigin), QUrl::StrictMode);
    if (!origin.isValid() || origin.isEmpty()) {
        qFatal("the web application origin of this build is not a URL: %s", build::kWebAppOrigin);
    }
    return origin;
}

} // namespace

DesktopConnectorManager::DesktopConnectorManager(Platform& platform)
    : m_platform(platform), m_menuState(m_willChange, ConnectorMenuState::offline),
      m_statusText(m_willChange, QStringLiteral("Offline")),
      m_workspaceId(m_willChange, std::nullopt), m_lastError(m_willChange, std::nullopt),
      m_webAppBaseURL(m_willChange, defaultWebAppOrigin()),
      m_launchAtLoginEnabled(m_willChange, false),
      m_runtimeUpdateStatusText(m_willChange, QStringLiteral("Runtime: Checking...")),
      m_runtimeUpdateAvailable(m_willChange, false), m_runtimeCanRollback(m_willChange, false),
      m_runtimeUpdateInProgress(m_willChange, false),
      m_hostControlServer(std::make_shared<HostControlServer>(m_platform)) {
    m_session = m_platform.httpSessions.makeLoopbackSession(httpLimits(m_traySettings));
    m_launchAtLoginEnabled.set(m_platform.loginItem.isEnabled());
}

void DesktopConnectorManager::start() {
    m_platform.application.becomeAccessory();
    m_terminationObserver =
        m_platform.application.addWillTerminateObserver([weak = weak_from_this()] {
            if (const auto self = weak.lock()) {
                self->handleApplicationTermination();
            }
        });
    try {
        prepareStateRoot();
        m_traySettings = effectiveTraySettings(
            readIfPossible(m_platform.files, stateRoot() + QStringLiteral("/config.json")));
        m_session = m_platform.httpSessions.makeLoopbackSession(httpLimits(m_traySettings));
        startHostControlServer();
    } catch (const PlatformError& error) {
        m_lastError.set(error.description());
        return;
    }
    startPolling();
    startOwnTask([](DesktopConnectorManager& self) { return self.adoptOrLaunch(); });
}

Task<> DesktopConnectorManager::adoptOrLaunch() {
    const bool alreadyAnswers = co_await refreshStatus();
    if (!alreadyAnswers) {
        co_await startServerProcessAsync(std::nullopt, false);
    }
    co_await checkRuntimeUpdates(false);
}

QString DesktopConnectorManager::stateRoot() const {
    return m_platform.locations.applicationSupport() + QStringLiteral("/Orvanta");
}

void DesktopConnectorManager::prepareStateRoot() {
    FileManager& files = m_platform.files;
    files.createDirectory(stateRoot());
    const QString config = stateRoot() + QStringLiteral("/config.json");
    if (files.itemExists(config)) {
        return;
    }
    const QString shippedTemplate =
        m_platform.locations.resourceRoot() + QStringLiteral("/local-server/config.installer.json");
    if (!files.itemExists(shippedTemplate)) {
        throw PlatformError(
            QStringLiteral("OrvantaMac"), 1,
            QStringLiteral("Bundled config.installer.json is missing from the app resources."));
    }
    files.copyItem(shippedTemplate, config);
}

MacRuntimeUpdater& DesktopConnectorManager::runtimeUpdater() {
    if (!m_runtimeUpdater) {
        m_runtimeUpdater = std::make_unique<MacRuntimeUpdater>(m_platform.locations.resourceRoot(),
                                                               stateRoot(), m_platform);
    }
    return *m_runtimeUpdater;
}

void DesktopConnectorManager::handleApplicationTermination() {
    m_isShuttingDown = true;
    m_pollTimer.reset();
    m_runtimeUpdateTimer.reset();
    if (m_terminationObserver) {
        m_platform.application.removeObserver(*m_terminationObserver);
        m_terminationObserver.reset();
    }
    m_hostControlServer->stop();
    stopServerProcess();
}

void DesktopConnectorManager::startOwnTask(
    std::function<Task<>(DesktopConnectorManager&)> operation) {
    const auto hold = [](std::weak_ptr<DesktopConnectorManager> weak,
                         std::function<Task<>(DesktopConnectorManager&)> run) -> Task<> {
        if (const auto self = weak.lock()) {
            co_await run(*self);
        }
    };
    startTask(m_platform.mainQueue, [weak = weak_from_this(), operation = std::move(operation),
                                     hold] { return hold(weak, operation); });
}

} // namespace orvanta
