// SPDX-License-Identifier: MIT
#pragma once

#include "base/published.h"
#include "base/task.h"
#include "connector/connection_status.h"
#include "hostcontrol/host_control_server.h"
#include "platform/application_host.h"
#include "platform/child_process.h"
#include "platform/http_session.h"
#include "platform/platform.h"
#include "runtime/mac_config_file.h"
#include "runtime/mac_runtime_updater.h"

#include <QUrl>

#include <cstdint>
#include <memory>
#include <optional>
#include <set>

namespace orvanta {

/// The one controller of the application: keeps the connector alive and publishes what the menu
/// shows. Main thread only; held by a `shared_ptr`, because timers, tasks and the child's
/// callbacks hold it weakly.
///
/// created -> start() -> started, until handleApplicationTermination() -> shutting down, for good
///               \-> start failed: `lastError` says why, nothing runs
///
/// Operations never throw to their callers: what goes wrong is published in `lastError`. Who calls
/// an asynchronous one keeps the manager alive to its end.
class DesktopConnectorManager : public std::enable_shared_from_this<DesktopConnectorManager> {
public:
    /// Reads the login item's state; reads no file and starts nothing.
    explicit DesktopConnectorManager(Platform& platform);
    DesktopConnectorManager(const DesktopConnectorManager&) = delete;
    DesktopConnectorManager& operator=(const DesktopConnectorManager&) = delete;

    // What the menu shows. Every change is announced by `willChange` before it happens.
    WillChange& willChange() { return m_willChange; }
    ConnectorMenuState menuState() const { return *m_menuState; }
    const QString& statusText() const { return *m_statusText; }
    const std::optional<QString>& workspaceId() const { return *m_workspaceId; }
    const std::optional<QString>& lastError() const { return *m_lastError; }
    const QUrl& webAppBaseURL() const { return *m_webAppBaseURL; }
    bool launchAtLoginEnabled() const { return *m_launchAtLoginEnabled; }
    const QString& runtimeUpdateStatusText() const { return *m_runtimeUpdateStatusText; }
    bool runtimeUpdateAvailable() const { return *m_runtimeUpdateAvailable; }
    bool runtimeCanRollback() const { return *m_runtimeCanRollback; }
    bool runtimeUpdateInProgress() const { return *m_runtimeUpdateInProgress; }

    // Life (manager_lifecycle.cpp)

    /// Starts everything: settings, host control, polling, then a task that adopts a connector
    /// that already answers or launches one. Called once, by the application entry.
    void start();

    /// Ends everything at once: no restart follows, timers and listener stop, the child gets
    /// SIGTERM and is not waited for. Called by Quit and when the application terminates.
    void handleApplicationTermination();

    // The child process (manager_launcher.cpp)

    /// Launches the connector unless one runs, a start is under way or the application is quitting.
    /// A `requestedPort` outside 1 to 65535 means any port. Failures go to `lastError`; the child's
    /// exit leads to a restart, or with `retryWithDynamicPortOnFailure` and a requested port, to
    /// one immediate start on any port.
    Task<> startServerProcessAsync(std::optional<std::int64_t> requestedPort,
                                   bool retryWithDynamicPortOnFailure);

    /// One start on any port, `delay` from now. Until then an exit schedules no other.
    void scheduleRestart(Seconds delay);

    /// Forgets the child and sends it SIGTERM; its exit is handled later like any other.
    void stopServerProcess();

    // Its output (manager_output.cpp)

    /// Looks for announced ports in one chunk of the child's output; a new port is stored and
    /// starts a status refresh.
    void handleOutput(const QByteArray& data);

    // Status (manager_status.cpp)

    /// Starts the status poll and the six-hourly update check, replacing earlier timers. The first
    /// ticks come one whole interval later.
    void startPolling();

    /// Fetches and publishes the connector's status. True when a document was fetched and decoded.
    Task<bool> refreshStatus();

    /// Publishes what follows from `status`; without one, that the connector is offline.
    void updateStatus(const std::optional<TrayConnectionStatus>& status);

    // HTTP towards the connector (manager_http.cpp)

    /// "http://127.0.0.1:PORT", without a trailing slash.
    QString serverBaseURL() const;

    /// Sends an empty POST to `path` (it may carry a query). True for a status of 200 to 299;
    /// false for everything else, transport errors included.
    Task<bool> post(QString path);

    /// True when the connector's health endpoint answers with status 200.
    Task<bool> isServerHealthy();

    /// Refreshes the status every half second until it succeeds; false after 20 failures, with the
    /// offline state published.
    Task<bool> waitForHealthyStatusOnly();

    // User commands (manager_commands.cpp)

    /// Opens the web application, at the workspace if there is one.
    void openDashboard();
    /// Asks the connector to pair; the next poll shows what comes of it.
    Task<> startPairing();
    /// Unpairs and refreshes the status at once.
    Task<> signOut();
    /// Asks the connector to restart itself; restarts it ourselves if it does not answer.
    Task<> restartServer();
    /// Registers or removes the login item; what it then really is gets published.
    void setLaunchAtLogin(bool enabled);
    /// Lets the connector ask for its restart. Throws `PlatformError` when the listener cannot be
    /// made.
    void startHostControlServer();
    /// Stops the connector and starts it again half a second later, on the same port if it can.
    Task<> performHostManagedRestart();

    // Runtime updates (manager_runtime_updates.cpp)

    // The three commands run one at a time: one that finds another under way does nothing.

    /// Looks for a newer runtime. A failure goes to `lastError` only with `showError`.
    Task<> checkRuntimeUpdates(bool showError);
    /// Installs a newer runtime if there is one and restarts the connector, in any case; back to
    /// the previous runtime if the connector does not come up.
    Task<> applyRuntimeUpdate();
    /// Back to the previous runtime, with a restart.
    Task<> rollbackRuntime();
    /// Publishes what the updater knows: its line, whether an update or a rollback is possible.
    void refreshRuntimeUpdateState();
    /// Waits for the just launched, unconfirmed runtime to come up; back to the previous one if it
    /// does not. Does nothing while the same version is being watched. Started by the launcher.
    Task<> validatePendingRuntimeHealth();
    /// Stops the connector, starts the runtime chosen now and waits for its status. True when it
    /// came within 20 attempts, half a second apart.
    Task<bool> restartRuntimeAndWaitForHealth();

    // What other operations and tests look at; not published.
    std::int64_t serverPort() const { return m_serverPort; }
    bool isShuttingDown() const { return m_isShuttingDown; }
    bool restartScheduled() const { return m_restartScheduled; }
    bool startInProgress() const { return m_startInProgress; }
    bool hasServerProcess() const { return m_serverProcess != nullptr; }
    const std::optional<MacRuntimeLaunchConfiguration>& activeRuntime() const {
        return m_activeRuntime;
    }
    const MacTraySettings& traySettings() const { return m_traySettings; }
    /// Created on first use and kept.
    MacRuntimeUpdater& runtimeUpdater();

private:
    /// What an exit needs to know about the launch it ends.
    struct Launch {
        std::int64_t port = 0;
        bool retryWithDynamicPortOnFailure = false;
    };

    QString stateRoot() const;
    void prepareStateRoot();
    Task<> adoptOrLaunch();

    Task<> launchResolvedRuntime(Launch launch);
    std::optional<QString> missingPart(const MacRuntimeLaunchConfiguration& runtime) const;
    EnvironmentVariables childEnvironment(const MacRuntimeLaunchConfiguration& runtime,
                                          std::int64_t launchPort) const;
    void launchChild(const MacRuntimeLaunchConfiguration& runtime, Launch launch);
    void handleExit(Launch launch, int status);
    static void reportExit(StandardOutput& output, int status);
    void confirmPendingRuntime();
    void startOnAnyPort();

    void beginStatusRefresh();
    Task<std::optional<TrayConnectionStatus>> fetchStatus();
    Task<> restartOnSamePort();

    void confirmActiveRuntime();
    /// One of the three runtime commands under way; however it ends, the next one can begin.
    class RuntimeCommand;
    /// Nothing when another one is under way.
    std::unique_ptr<RuntimeCommand> beginRuntimeCommand(const QString& line);
    void endRuntimeCommand(std::unique_ptr<RuntimeCommand> command);
    void showRuntimeLine(const QString& line);
    void reportRuntimeFailure(const MacRuntimeUpdateResult& result);
    Task<> confirmUpdatedRuntime();
    Task<> abandonRuntime();
    /// A version that a watch of a launch looks after, from its wait to the end of what follows.
    class RuntimeWatch;
    /// The store's current version.
    std::optional<QString> currentVersion();
    /// The store's current version while it awaits its first confirmation.
    std::optional<QString> pendingVersion();
    bool canRollback();
    QString runtimeLine();

    /// Runs `operation` as an independent task that keeps the manager alive to its end; nothing
    /// happens when the manager has gone before the task's turn comes.
    void startOwnTask(std::function<Task<>(DesktopConnectorManager&)> operation);

    Platform m_platform;
    WillChange m_willChange;
    Published<ConnectorMenuState> m_menuState;
    Published<QString> m_statusText;
    Published<std::optional<QString>> m_workspaceId;
    Published<std::optional<QString>> m_lastError;
    Published<QUrl> m_webAppBaseURL;
    Published<bool> m_launchAtLoginEnabled;
    Published<QString> m_runtimeUpdateStatusText;
    Published<bool> m_runtimeUpdateAvailable;
    Published<bool> m_runtimeCanRollback;
    Published<bool> m_runtimeUpdateInProgress;

    std::shared_ptr<HttpSession> m_session;
    std::shared_ptr<HostControlServer> m_hostControlServer;
    std::unique_ptr<RepeatingTimer> m_pollTimer;
    std::unique_ptr<RepeatingTimer> m_runtimeUpdateTimer;
    std::shared_ptr<ChildProcess> m_serverProcess;
    std::optional<ApplicationHost::ObserverToken> m_terminationObserver;
    /// Where the connector listens; a placeholder until the first announcement.
    std::int64_t m_serverPort = 3000;
    /// Set by the shutdown, never reset: nothing is started any more.
    bool m_isShuttingDown = false;
    /// A delayed start is pending or a restart of ours is under way: an exit starts nothing.
    /// Ended by the delay or the pause, just before the start.
    bool m_restartScheduled = false;
    /// The runtime of the child; after a failed launch the one that could not be launched.
    std::optional<MacRuntimeLaunchConfiguration> m_activeRuntime;
    /// From the guards of a start to its end; waits for the runtime to be resolved.
    bool m_startInProgress = false;
    MacTraySettings m_traySettings;
    std::unique_ptr<MacRuntimeUpdater> m_runtimeUpdater;
    /// The pending versions that are being watched: one watch each, however often they are
    /// launched.
    std::set<QString> m_watchedVersions;
};

} // namespace orvanta
