// SPDX-License-Identifier: MIT
#pragma once

#include "simulation/model/supervision_rules.h"

#include <optional>

namespace orvanta::simulation {

/// One life of the tray: what the icon and the status line say, and that the connector is asked.
class StatusRules {
public:
    StatusRules(World& world, Verdict& verdict, const SupervisionRules& supervision);

    void slept(Moment duration) { m_lastAsked += duration; }
    void requestSent(Purpose purpose);
    void replied(const ReplySeen& reply);
    void replyHandled(const ReplySeen& reply);
    void launched() { m_mayStart = now(); }
    /// Just before the tray reads of it, and before the supervision knows.
    void portAnnounced(std::int64_t port);
    void check();

private:
    Moment now() const { return m_world.queue.now(); }
    void fail(const char* rule, const std::string& detail = {}) const;
    void expect(ConnectorMenuState state, const std::optional<QString>& workspace);
    void checkText(const QString& text);

    World& m_world;
    Verdict& m_verdict;
    const SupervisionRules& m_supervision;
    double m_pollSeconds = 5;
    ConnectorMenuState m_state = ConnectorMenuState::offline;
    std::optional<QString> m_workspace;
    QString m_text;
    Moment m_lastAsked = 0;
    /// The status has to be asked for at that moment, since a new port was announced.
    Moment m_askDue = -1;
    Moment m_mayStart = -1;
    Moment m_mayRestart = -1;
    Moment m_gaveUp = -1;
};

} // namespace orvanta::simulation
