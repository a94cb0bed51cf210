// SPDX-License-Identifier: MIT
#include "connector/desktop_connector_manager.h"

#include "base/platform_error.h"
#include "platform/file_manager.h"
#include "platform/main_queue.h"
#include "platform/standard_output.h"

namespace orvanta {

namespace {

constexpr Seconds kRestartDelay{1.0};

std::int64_t launchPort(std::optional<std::int64_t> requestedPort) {
    const bool isValid = requestedPort && *requestedPort >= 1 && *requestedPort <= 65535;
    return isValid ? *requestedPort : 0;
}

/// True for its own life: whatever ends a start, the next one is not blocked for ever.
class FlagWhileAlive {
public:
    explicit FlagWhileAlive(bool& flag) : m_flag(flag) { m_flag = true; }
    FlagWhileAlive(const FlagWhileAlive&) = delete;
    FlagWhileAlive& operator=(const FlagWhileAlive&) = delete;
    ~FlagWhileAlive() { m_flag = false; }

private:
    bool& m_flag;
};

QString serverScript(const MacRuntimeLaunchConfiguration& runtime) {
    return runtime.localServerRoot + QStringLiteral("/server.js");
}

} // namespace

Task<> DesktopConnectorManager::startServerProcessAsync(std::optional<std::int64_t> requestedPort,
                                                        bool retryWithDynamicPortOnFailure) {
    if (m_isShuttingDown || m_startInProgress ||
        (m_serverProcess && m_serverProcess->isRunning())) {
        co_return;
    }
    const FlagWhileAlive starting(m_startInProgress);
    const Launch launch{launchPort(requestedPort), retryWithDynamicPortOnFailure};
    co_await launchResolvedRuntime(launch);
}

Task<> DesktopConnectorManager::launchResolvedRuntime(Launch launch) {
    MacRuntimeLaunchConfiguration runtime;
    try {
        runtime = co_await runtimeUpdater().resolveLaunchConfiguration();
    } catch (const PlatformError& error) {
        m_lastError.set(error.description());
        co_return;
    }
    if (m_isShuttingDown) {
        // Quit came while the runtime was being resolved; a child started now would be orphaned.
        co_return;
    }
    m_activeRuntime = runtime;
    refreshRuntimeUpdateState();
    if (const auto problem = missingPart(runtime)) {
        m_lastError.set(*problem);
        co_return;
    }
    launchChild(runtime, launch);
}

std::optional<QString>
DesktopConnectorManager::missingPart(const MacRuntimeLaunchConfiguration& runtime) const {
    if (!m_platform.files.isExecutableFile(runtime.nodeBinaryURL)) {
        return QStringLiteral(
            "Node runtime is missing from the selected Desktop Connector runtime.");
    }
    if (!m_platform.files.itemExists(serverScript(runtime))) {
        return QStringLiteral(
            "Local server is missing from the selected Desktop Connector runtime.");
    }
    return std::nullopt;
}

EnvironmentVariables
DesktopConnectorManager::childEnvironment(const MacRuntimeLaunchConfiguration& runtime,
                                          std::int64_t launchPort) const {
    EnvironmentVariables variables = m_platform.environment.variables();
    variables.set("PORT", QByteArray::number(static_cast<qlonglong>(launchPort)));
    variables.set("HOST", "127.0.0.1");
    variables.set("ORVANTA_RUNTIME_ROOT", runtime.localServerRoot.toUtf8());
    variables.set("ORVANTA_STATE_ROOT", stateRoot().toUtf8());
    variables.set("ORVANTA_NODE_PATH", runtime.nodeBinaryURL.toUtf8());
    if (const auto url = m_hostControlServer->restartURL()) {
        variables.set("ORVANTA_HOST_CONTROL_URL", url->toEncoded());
    }
    return variables;
}

void DesktopConnectorManager::launchChild(const MacRuntimeLaunchConfiguration& runtime,
                                          Launch launch) {
    ChildProcessOptions options;
    options.executable = runtime.nodeBinaryURL;
    options.arguments = {serverScript(runtime)};
    options.workingDirectory = runtime.localServerRoot;
    options.environment = childEnvironment(runtime, launch.port);
    options.onOutput = [weak = weak_from_this()](const QByteArray& data) {
        if (const auto self = weak.lock()) {
            self->handleOutput(data);
        }
    };
    options.onExit = [weak = weak_from_this(), launch,
                      &output = m_platform.standardOutput](int status) {
        if (const auto self = weak.lock()) {
            self->handleExit(launch, status);
        } else {
            reportExit(output, status);
        }
    };
    try {
        m_serverProcess = m_platform.childProcesses.launch(std::move(options));
    } catch (const PlatformError& error) {
        m_lastError.set(QStringLiteral("Failed to start the Desktop Connector: ") +
                        error.description());
        return;
    }
    m_lastError.set(std::nullopt);
    m_statusText.set(QStringLiteral("Starting..."));
    confirmPendingRuntime();
}

void DesktopConnectorManager::handleExit(Launch launch, int status) {
    // Not compared with the child that exited: the late exit of a replaced child clears the
    // reference to its successor, by design.
    m_serverProcess.reset();
    m_activeRuntime.reset();
    if (!m_isShuttingDown && !m_restartScheduled) {
        if (launch.retryWithDynamicPortOnFailure && launch.port >= 1) {
            m_platform.standardOutput.printLine(
                QStringLiteral("Orvanta server failed after requesting port %1; retrying with an "
                               "OS-assigned port")
                    .arg(launch.port));
            startOnAnyPort();
            return;
        }
        scheduleRestart(kRestartDelay);
    }
    reportExit(m_platform.standardOutput, status);
}

void DesktopConnectorManager::reportExit(StandardOutput& output, int status) {
    output.printLine(QStringLiteral("Orvanta server exited with status %1").arg(status));
}

void DesktopConnectorManager::startOnAnyPort() {
    startOwnTask([](DesktopConnectorManager& self) {
        return self.startServerProcessAsync(std::nullopt, false);
    });
}

void DesktopConnectorManager::scheduleRestart(Seconds delay) {
    if (m_isShuttingDown) {
        return;
    }
    m_restartScheduled = true;
    m_platform.mainQueue.after(delay, [weak = weak_from_this()] {
        if (const auto self = weak.lock()) {
            self->m_restartScheduled = false;
            self->startOnAnyPort();
        }
    });
}

void DesktopConnectorManager::stopServerProcess() {
    const auto process = std::exchange(m_serverProcess, nullptr);
    if (!process) {
        return;
    }
    m_activeRuntime.reset();
    if (process->isRunning()) {
        process->terminate();
    }
}

} // namespace orvanta
