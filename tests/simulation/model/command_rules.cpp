// SPDX-License-Identifier: MIT
#include "simulation/model/command_rules.h"

#include "simulation/model/texts.h"

namespace orvanta::simulation {

namespace {

/// More than any update takes, with two restarts.
constexpr Moment kLongestCommand = 90 * kMinute;

bool isSuccess(const ReplySeen& reply) {
    return reply.status >= 200 && reply.status <= 299;
}

std::optional<Purpose> requestOf(MenuEntryId entry) {
    switch (entry) {
    case MenuEntryId::signIn:
        return Purpose::pairing;
    case MenuEntryId::signOut:
        return Purpose::signingOut;
    case MenuEntryId::restart:
        return Purpose::restart;
    default:
        return std::nullopt;
    }
}

int restartsOf(MenuEntryId command) {
    return command == MenuEntryId::applyUpdate ? 2 : command == MenuEntryId::rollback ? 1 : 0;
}

} // namespace

void CommandRules::fail(const char* rule, const std::string& detail) const {
    m_verdict.fail(now(), rule, detail);
}

void CommandRules::clicked(MenuEntryId entry) {
    const auto entries = m_world.view()->entries();
    const MenuEntry& chosen = entries.at(static_cast<std::size_t>(entry) - 1);
    if (!chosen.isEnabled) {
        return;
    }
    m_dashboards += entry == MenuEntryId::openDashboard ? 1 : 0;
    if (const auto purpose = requestOf(entry)) {
        ++m_awaited[*purpose];
        m_clickedAt = now();
    }
    if (entry == MenuEntryId::checkForUpdates || entry == MenuEntryId::applyUpdate ||
        entry == MenuEntryId::rollback) {
        if (m_commandClickedAt != now()) {
            m_restartsClicked = 0;
            m_isUpdateClicked = false;
        }
        m_commandClickedAt = now();
        m_isArmed = true;
        m_restartsClicked += restartsOf(entry);
        m_isUpdateClicked = m_isUpdateClicked || entry == MenuEntryId::applyUpdate;
        m_supervision.commandBegan(m_restartsClicked);
    }
}

void CommandRules::requestSent(Purpose purpose) {
    if (purpose != Purpose::pairing && purpose != Purpose::signingOut &&
        purpose != Purpose::restart) {
        return;
    }
    if (m_awaited[purpose]-- == 0) {
        fail("a request is sent that nobody asked for");
    }
}

void CommandRules::replyHandled(const ReplySeen& reply) {
    const auto& error = m_world.manager()->lastError();
    const auto expectError = [&](const char* text) {
        if (isSuccess(reply) ? error.has_value() : error != QString::fromLatin1(text)) {
            fail("the error line does not say how the command ended",
                 error.value_or(QStringLiteral("(none)")).toStdString());
        }
    };
    if (reply.purpose == Purpose::pairing) {
        expectError("Could not reach the Desktop Connector to start pairing.");
    } else if (reply.purpose == Purpose::signingOut) {
        expectError("Could not reach the Desktop Connector to sign out.");
    } else if (reply.purpose == Purpose::restart && isSuccess(reply) && error.has_value()) {
        fail("the error line stays after a restart was accepted", error->toStdString());
    }
}

void CommandRules::checkLines() {
    const QString& line = m_world.manager()->runtimeUpdateStatusText();
    if (line != m_seenLine) {
        m_seenLine = line;
        if (!isRuntimeLine(line)) {
            fail("the runtime line is none of its texts", line.toStdString());
        }
    }
    const auto& error = m_world.manager()->lastError();
    if (error != m_seenError) {
        m_seenError = error;
        if (error && !isErrorLine(*error)) {
            fail("the error line is none of its texts", error->toStdString());
        }
    }
    if (m_isLaunched && error) {
        fail("the error line stays after a successful launch", error->toStdString());
    }
    m_isLaunched = false;
    if (m_world.manager()->launchAtLoginEnabled() != m_world.loginItem.enabled) {
        fail("the login item is not as the menu says");
    }
    if (m_world.browser.opened.size() != m_dashboards) {
        fail("the web application is not opened once with each click");
    }
}

/// What the menu offers after a runtime command.
void CommandRules::checkMenu() const {
    const DesktopConnectorManager& manager = *m_world.manager();
    const auto& record = m_store.record();
    const bool isReadable = m_world.conditions.as<Disk>(Condition::disk) != Disk::unreadable;
    const bool canGoBack = record && !record->previous.value_or(QString()).isEmpty();
    if (isReadable && manager.runtimeCanRollback() != canGoBack) {
        fail("the menu is wrong about whether there is a version to go back to");
    }
    const QString& line = manager.runtimeUpdateStatusText();
    if (line.startsWith(QStringLiteral("Runtime: Update available: "))) {
        if (!manager.runtimeUpdateAvailable()) {
            fail("an update is announced that the menu does not offer");
        }
        if (record && line.endsWith(QStringLiteral(": ") + record->current)) {
            fail("the current version is announced as an update");
        }
    }
}

void CommandRules::commandChanged(bool isInProgress) {
    m_isInProgress = isInProgress;
    if (isInProgress) {
        m_commandBegan = now();
        const bool isOfUser = m_commandClickedAt == now();
        m_store.setUpdating(isOfUser && m_isUpdateClicked);
        m_isRestarting = isOfUser && m_restartsClicked > 0;
        m_isArmed = false;
        return;
    }
    checkMenu();
    // A start that was under way before takes up what was switched to, and so does a restart that
    // has not come to its start: that of a watch which rolls back while the command still waits.
    const DesktopConnectorManager& manager = *m_world.manager();
    const bool isStarting = manager.startInProgress() || manager.restartScheduled();
    if (m_isRestartOwed && !isStarting && !m_supervision.isQuitting()) {
        fail("the runtime was switched, but the connector was not restarted");
    }
    const auto& record = m_store.record();
    const bool isUnsettled =
        m_isInstalling && m_store.canGoBack() && record->isPending && !isStarting;
    if (isUnsettled && m_failedFiles == failedFiles() && !m_supervision.isQuitting()) {
        fail("an update ends without a confirmation or a rollback");
    }
    m_isInstalling = false;
    m_isRestartOwed = false;
    m_isRestarting = false;
    m_supervision.commandEnded();
    m_store.setUpdating(false);
}

void CommandRules::checkCommand() {
    // A switch during a start is the start's own: a promotion, or a mandatory update.
    const bool isOfCommand = m_isRestarting && !m_supervision.isStarting();
    const bool isSwitch = m_store.lastSwitch() == now() && m_seenSwitch != now();
    if (isSwitch && !isOfCommand) {
        m_isInstalling = false;
    } else if (isSwitch) {
        m_isRestartOwed = true;
        const auto& record = m_store.record();
        // It may also be the way back from a version that did not answer.
        m_isInstalling = m_isUpdateClicked && record && record->isPending;
        m_failedFiles = failedFiles();
    }
    m_seenSwitch = m_store.lastSwitch();
    const bool isInProgress = m_world.manager()->runtimeUpdateInProgress();
    if (isInProgress != m_isInProgress) {
        commandChanged(isInProgress);
    } else if (m_isArmed && now() > m_commandClickedAt) {
        // It ended as soon as it had begun.
        m_isArmed = false;
        m_supervision.commandEnded();
    } else if (isInProgress && now() > m_commandBegan + kLongestCommand) {
        fail("a runtime command does not end");
    }
}

void CommandRules::check() {
    checkLines();
    checkCommand();
    if (m_clickedAt >= 0 && now() > m_clickedAt) {
        m_clickedAt = -1;
        for (const auto& [purpose, count] : m_awaited) {
            if (count != 0) {
                fail("a click leads to no request");
            }
        }
    }
}

} // namespace orvanta::simulation
