// SPDX-License-Identifier: MIT
#include "simulation/model/supervision_rules.h"

#include <algorithm>

namespace orvanta::simulation {

namespace {

constexpr Moment kRestartDelay = kSecond;
constexpr Moment kPause = kSecond / 2;
/// More than timers are ever late.
constexpr Moment kSlack = 150 * kMillisecond;
/// More than twenty attempts take, and the installation that may come before the start, twice.
constexpr Moment kLongestWait = 40 * kMinute;
/// More than any installation takes.
constexpr Moment kLongestStart = 40 * kMinute;

std::int64_t launchPort(std::int64_t port) {
    return port >= 1 && port <= 65'535 ? port : 0;
}

} // namespace

void SupervisionRules::fail(const char* rule, const std::string& detail) const {
    m_verdict.fail(now(), rule, detail);
}

void SupervisionRules::quitting() {
    m_isQuitting = true;
    m_permits.clear();
    m_obligations.clear();
}

void SupervisionRules::slept(Moment from, Moment to) {
    // Also what was due just before: its timer may have been late.
    const auto postponed = [from, to](Moment moment) {
        return moment + kSlack >= from && moment < to ? to : moment;
    };
    for (Permit& permit : m_permits) {
        permit.overslept = postponed(std::max(permit.earliest, permit.overslept));
        // A start that is under way may have found it before.
        permit.earliest = m_isAttempting ? permit.earliest : postponed(permit.earliest);
    }
    for (Obligation& obligation : m_obligations) {
        obligation.until = obligation.until >= from && obligation.until < to + kSlack
                               ? to + kSlack
                               : obligation.until;
    }
    m_watches.slept(to - from);
    m_watchedUntil += to - from;
    m_attemptLimit += to - from;
    m_lastCheck = to;
}

void SupervisionRules::setPort(std::int64_t port) {
    if (port == m_port) {
        return;
    }
    m_ports.emplace_back(now(), m_port);
    if (m_ports.size() > 32) {
        m_ports.pop_front();
    }
    m_port = port;
}

/// Whether the tray can have taken `port` for the connector's at that moment, or for none.
bool SupervisionRules::isPortOf(Moment asked, std::int64_t port) const {
    std::int64_t current = m_port;
    if (launchPort(current) == port && (m_ports.empty() || m_ports.back().first <= asked)) {
        return true;
    }
    for (auto change = m_ports.rbegin(); change != m_ports.rend(); ++change) {
        const bool wasSetBy =
            std::next(change) == m_ports.rend() || std::next(change)->first <= asked;
        if (change->first >= asked && wasSetBy && launchPort(change->second) == port) {
            return true;
        }
    }
    return false;
}

bool SupervisionRules::isOver(const Permit& permit, Moment began) {
    return began > std::max(permit.earliest, permit.overslept) + kSlack;
}

bool SupervisionRules::usePermit(std::int64_t port) {
    const Moment began = attemptBegan();
    bool wasPermitted = false;
    for (auto permit = m_permits.begin(); permit != m_permits.end(); ++permit) {
        if (permit->earliest > began || isOver(*permit, began)) {
            continue;
        }
        wasPermitted = true;
        if (permit->keepsPort ? isPortOf(permit->asked, port) : port == 0) {
            m_permits.erase(permit);
            return true;
        }
    }
    if (m_commandRestarts > 0) {
        --m_commandRestarts;
        return true;
    }
    if (m_watches.spend(now())) {
        return true;
    }
    fail(wasPermitted ? "a connector is launched on a port that is not its turn"
                      : "a connector is launched though nothing calls for it",
         "PORT=" + std::to_string(port));
    return false;
}

void SupervisionRules::choose(const QString& executable) {
    m_chosenRoot = executable.chopped(QStringLiteral("/node-runtime/node").size());
    ++m_choice;
    if (m_chosenRoot != m_lastRoot) {
        m_lastRoot = m_chosenRoot;
        m_sameRuntimeSince = m_choice;
    }
}

std::optional<QString> SupervisionRules::chosenName() const {
    const QString parent = m_world.versionsPath() + QLatin1Char('/');
    return m_chosenRoot.startsWith(parent) ? std::optional(m_chosenRoot.mid(parent.size()))
                                           : std::nullopt;
}

bool SupervisionRules::isStarting() const {
    return m_world.manager()->startInProgress() || m_lastAttempt == now();
}

void SupervisionRules::attemptSeen() {
    m_lastAttempt = now();
    for (Obligation& obligation : m_obligations) {
        obligation.isMet = obligation.isMet || obligation.from <= now();
    }
}

void SupervisionRules::launched(const Connector& connector) {
    if (m_isQuitting) {
        fail("a connector is launched after the end of the tray");
    }
    if (m_held != 0) {
        fail("a connector is launched while another one is held");
    }
    const std::int64_t port = connector.requestedPort();
    usePermit(port);
    if (port > 0) {
        m_retries.insert(connector.number());
    }
    m_held = connector.number();
    choose(connector.options().executable);
    attemptSeen();
}

void SupervisionRules::launchRefused(const QString& executable) {
    choose(executable);
    attemptSeen();
}

void SupervisionRules::terminated(const Connector& connector) {
    if (connector.number() != m_held) {
        fail("SIGTERM goes to a connector that is not held");
    }
    if (!m_stopped.insert(connector.number()).second) {
        fail("SIGTERM goes to the same connector twice");
    }
    if (!m_isQuitting && m_lastRestartAsked != now() && !mayRestart()) {
        fail("a connector is stopped though nothing calls for it");
    }
    m_held = 0;
    forgetChoice();
}

void SupervisionRules::exitReported(const Connector& connector) {
    m_held = 0;
    forgetChoice();
    const bool hadPort = m_retries.erase(connector.number()) != 0;
    const bool isStartDue = m_world.manager()->restartScheduled();
    m_isRetryDue = hadPort && !isStartDue && !m_isQuitting;
    if (m_isQuitting) {
        return;
    }
    const Moment delay = m_isRetryDue ? 0 : kRestartDelay;
    if (!isStartDue) {
        m_permits.push_back({now(), now() + delay, false});
    } else if (m_obligations.empty() && !mayRestart()) {
        fail("a start is said to be due that nothing calls for");
    }
    m_obligations.push_back({now(), now() + delay + kSlack});
}

void SupervisionRules::restartAskedFor() {
    if (m_isQuitting) {
        return;
    }
    m_lastRestartAsked = now();
    m_permits.push_back({now(), now() + kPause, true});
    m_obligations.push_back({now(), now() + kPause + kSlack});
}

void SupervisionRules::commandBegan(int restarts) {
    m_commandRestarts = restarts;
    m_isCommandRestarting = restarts > 0;
}

void SupervisionRules::commandEnded() {
    m_commandRestarts = 0;
    m_isCommandRestarting = false;
}

void SupervisionRules::watchBegan(const QString& version) {
    m_watchedUntil = now() + kLongestWait;
    m_watches.began(version, now());
}

void SupervisionRules::replied(const ReplySeen& reply) {
    if (reply.meaning && reply.meaning->port >= 1) {
        setPort(reply.meaning->port);
    }
    const bool isUsable = reply.purpose == Purpose::status && reply.meaning.has_value();
    if (isUsable) {
        m_watches.answered();
    }
    if (m_firstLook.endsInVain(reply) && !m_isQuitting) {
        m_permits.push_back({now(), now(), false});
        m_obligations.push_back({now(), now() + kSlack});
    }
    const bool isRefused = reply.status < 200 || reply.status > 299;
    if (reply.purpose == Purpose::restart && isRefused) {
        restartAskedFor();
    }
}

void SupervisionRules::meetObligations(bool isStartUnderWay) {
    const Moment from = m_lastCheck;
    for (Obligation& obligation : m_obligations) {
        const bool overlaps = std::max(from, obligation.from) < std::min(now(), obligation.until);
        const bool isRead =
            m_settingsReadAt >= obligation.from && m_settingsReadAt <= obligation.until;
        if (isRead || (overlaps && m_wasUnderWay) ||
            (isStartUnderWay && now() >= obligation.from && now() <= obligation.until)) {
            obligation.isMet = true;
        }
        if (now() > obligation.until && !obligation.isMet && m_isSupervising) {
            fail("no start was tried though one was due", "at " + written(obligation.until));
        }
    }
    std::erase_if(m_obligations, [this](const auto& o) { return now() > o.until; });
    std::erase_if(m_permits, [this](const auto& permit) { return isOver(permit, attemptBegan()); });
    m_watches.expire(now());
}

void SupervisionRules::checkStart() {
    if (!m_isSupervising && !m_isQuitting) {
        m_isSupervising = !m_world.hosts.listeners.empty();
    }
}

void SupervisionRules::compare() {
    const DesktopConnectorManager& manager = *m_world.manager();
    if (manager.hasServerProcess() != (m_held != 0)) {
        fail("the tray and the model differ on whether a connector is held");
    }
    if (manager.isShuttingDown() != m_isQuitting) {
        fail("the tray and the model differ on whether the end has come");
    }
    if (manager.serverPort() != m_port) {
        fail("the connector's port is not the one announced last",
             std::to_string(manager.serverPort()) + " instead of " + std::to_string(m_port));
    }
}

void SupervisionRules::check() {
    checkStart();
    compare();
    const bool isAttempting = m_world.manager()->startInProgress();
    if (isAttempting && !m_isAttempting) {
        m_attemptBegan = now();
        m_attemptLimit = now() + kLongestStart;
    }
    if (isAttempting && now() > m_attemptLimit) {
        fail("a start does not end");
    }
    if (m_isAttempting && !isAttempting) {
        m_lastAttempt = now();
    }
    m_isAttempting = isAttempting;
    const bool isUnderWay = isAttempting || m_held != 0;
    meetObligations(isUnderWay);
    m_wasUnderWay = isUnderWay;
    m_lastCheck = now();
}

} // namespace orvanta::simulation
