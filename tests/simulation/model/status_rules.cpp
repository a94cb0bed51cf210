// SPDX-License-Identifier: MIT
#include "simulation/model/status_rules.h"

namespace orvanta::simulation {

namespace {

QString textOf(ConnectorMenuState state) {
    switch (state) {
    case ConnectorMenuState::offline:
        return QStringLiteral("Offline");
    case ConnectorMenuState::notPaired:
        return QStringLiteral("Not Paired");
    case ConnectorMenuState::online:
        break;
    }
    return QStringLiteral("Online");
}

} // namespace

StatusRules::StatusRules(World& world, Verdict& verdict, const SupervisionRules& supervision)
    : m_world(world), m_verdict(verdict), m_supervision(supervision),
      m_text(QStringLiteral("Offline")), m_lastAsked(world.queue.now()) {
    const bool isReadable = world.conditions.as<Disk>(Condition::disk) != Disk::unreadable;
    const auto index = isReadable ? world.conditions[Condition::config] : 0;
    m_pollSeconds = kConfigs.at(static_cast<std::size_t>(index)).pollSeconds;
}

void StatusRules::fail(const char* rule, const std::string& detail) const {
    m_verdict.fail(now(), rule, detail);
}

void StatusRules::requestSent(Purpose purpose) {
    if (purpose == Purpose::status) {
        m_lastAsked = now();
    }
}

void StatusRules::expect(ConnectorMenuState state, const std::optional<QString>& workspace) {
    m_state = state;
    m_workspace = workspace;
    m_text = textOf(state);
}

void StatusRules::replied(const ReplySeen& reply) {
    if (reply.purpose == Purpose::status && reply.meaning) {
        expect(reply.meaning->state, reply.meaning->workspace);
    } else if (reply.purpose == Purpose::health && reply.status != 200) {
        expect(ConnectorMenuState::offline, std::nullopt);
    } else if (reply.purpose == Purpose::health) {
        m_gaveUp = now();
    } else if (reply.purpose == Purpose::restart && reply.status >= 200 && reply.status <= 299) {
        m_text = QStringLiteral("Restarting...");
    }
}

void StatusRules::portAnnounced(std::int64_t port) {
    if (port != m_supervision.port()) {
        m_askDue = now();
    }
}

void StatusRules::replyHandled(const ReplySeen& reply) {
    const bool isSuccess = reply.status >= 200 && reply.status <= 299;
    if (reply.purpose == Purpose::signingOut && isSuccess && m_lastAsked != now()) {
        fail("signing out is not followed by a look at the status");
    }
    if (reply.purpose == Purpose::status || reply.purpose == Purpose::health ||
        reply.purpose == Purpose::restart) {
        check();
    }
}

void StatusRules::checkText(const QString& text) {
    if (text == m_text) {
        return;
    }
    const bool isStart = text == QStringLiteral("Starting...") && m_mayStart == now();
    const bool isRestart =
        text == QStringLiteral("Restarting...") &&
        (m_supervision.lastRestartAsked() == now() || m_supervision.mayRestart());
    if (!isStart && !isRestart) {
        fail("the status line is not what it should be",
             text.toStdString() + " instead of " + m_text.toStdString());
    }
    m_text = text;
}

void StatusRules::check() {
    const DesktopConnectorManager& manager = *m_world.manager();
    // The last attempt of a watch ends offline even when the connector claims to be healthy.
    const bool isOffline = manager.menuState() == ConnectorMenuState::offline &&
                           !manager.workspaceId() &&
                           (m_state != ConnectorMenuState::offline || m_workspace ||
                            manager.statusText() == textOf(ConnectorMenuState::offline));
    if (isOffline && m_gaveUp == now() && m_supervision.mayAwaitAnswer()) {
        expect(ConnectorMenuState::offline, std::nullopt);
    }
    if (manager.menuState() != m_state) {
        fail("the icon is not what the connector said last",
             textOf(manager.menuState()).toStdString() + " instead of " +
                 textOf(m_state).toStdString());
    }
    if (manager.workspaceId() != m_workspace) {
        fail("the workspace is not what the connector said last");
    }
    checkText(manager.statusText());
    if (m_askDue >= 0 && now() > m_askDue) {
        if (m_lastAsked < m_askDue) {
            fail("a connector with a new port is not asked for its status at once");
        }
        m_askDue = -1;
    }
    const auto longest = static_cast<Moment>(m_pollSeconds * 1e6) + kSecond;
    if (m_supervision.isSupervising() && !m_supervision.isQuitting() &&
        now() > m_lastAsked + longest) {
        fail("the connector is not asked for its status any more");
    }
}

} // namespace orvanta::simulation
