// SPDX-License-Identifier: MIT
#pragma once

#include "simulation/model/first_look.h"
#include "simulation/model/verdict.h"
#include "simulation/model/watches.h"
#include "simulation/world/world.h"

#include <deque>
#include <optional>
#include <set>
#include <vector>

namespace orvanta::simulation {

/// One life of the tray: which connector may be started and stopped when, and when one has to be.
///
/// A start needs a permit, and permits come from outside: the tray's own start, an exit, a restart
/// that was asked for, a runtime command. Each is good for one start at one moment. An obligation
/// says that a start must have been tried by then.
class SupervisionRules {
public:
    SupervisionRules(World& world, Verdict& verdict)
        : m_world(world), m_verdict(verdict), m_lastCheck(world.queue.now()) {}

    void quitting();
    void slept(Moment from, Moment to);

    void launched(const Connector& connector);
    void launchRefused(const QString& executable);
    void terminated(const Connector& connector);
    void exitReported(const Connector& connector);
    void portAnnounced(std::int64_t port) { setPort(port); }
    void requestSent(Purpose purpose, std::int64_t number) {
        m_firstLook.requestSent(purpose, number);
    }
    void replied(const ReplySeen& reply);
    void settingsRead() { m_settingsReadAt = now(); }
    void restartAskedFor();
    /// A runtime command may restart the connector so many times from now on.
    void commandBegan(int restarts);
    void commandEnded();
    /// A pending runtime is launched and watched, once at a time; the watch may restart the
    /// connector once.
    void watchBegan(const QString& version);
    void check();

    bool isQuitting() const { return m_isQuitting; }
    bool isSupervising() const { return m_isSupervising; }
    /// The connector that the tray holds; 0 for none.
    int held() const { return m_held; }
    /// Numbers every choice of a runtime; 0 while none is chosen.
    int choice() const { return m_chosenRoot.isEmpty() ? 0 : m_choice; }
    /// From this choice on it was always the same runtime.
    int sameRuntimeSince() const { return m_sameRuntimeSince; }
    /// The root of the runtime chosen last; empty when its connector has gone.
    const QString& chosenRoot() const { return m_chosenRoot; }
    /// The name of its directory in the store; nothing for the shipped one.
    std::optional<QString> chosenName() const;
    /// When the start under way, or the last one, began.
    Moment attemptBegan() const { return m_isAttempting ? m_attemptBegan : now(); }
    /// A start is under way, or has come to its launch or its end at this moment.
    bool isStarting() const;
    Moment lastRestartAsked() const { return m_lastRestartAsked; }
    /// A runtime command or a watch may restart the connector now.
    bool mayRestart() const { return m_commandRestarts > 0 || m_watches.mayRestart(); }
    /// The connector whose exit was reported last has to be followed by another one at once.
    bool isRetryDue() const { return m_isRetryDue; }
    /// Where the connector is asked for its status.
    std::int64_t port() const { return m_port; }
    /// One of them may wait for the connector's first answer.
    bool mayAwaitAnswer() const { return m_isCommandRestarting || now() <= m_watchedUntil; }
    /// The launch of a pending runtime is watched.
    bool isWatching() const { return now() <= m_watchedUntil; }

private:
    struct Permit {
        Moment asked;
        Moment earliest;
        bool keepsPort;
        /// When the computer woke that slept when it was due.
        Moment overslept = 0;
    };
    struct Obligation {
        Moment from;
        Moment until;
        bool isMet = false;
    };

    Moment now() const { return m_world.queue.now(); }
    void fail(const char* rule, const std::string& detail = {}) const;
    void setPort(std::int64_t port);
    static bool isOver(const Permit& permit, Moment began);
    bool usePermit(std::int64_t port);
    bool isPortOf(Moment asked, std::int64_t port) const;
    void choose(const QString& executable);
    void forgetChoice() { m_chosenRoot.clear(); }
    void attemptSeen();
    void meetObligations(bool isStartUnderWay);
    void compare();
    void checkStart();

    World& m_world;
    Verdict& m_verdict;
    bool m_isSupervising = false;
    bool m_isQuitting = false;
    FirstLook m_firstLook;
    int m_held = 0;
    int m_choice = 0;
    int m_sameRuntimeSince = 0;
    QString m_lastRoot;
    QString m_chosenRoot;
    std::int64_t m_port = 3000;
    std::deque<std::pair<Moment, std::int64_t>> m_ports; ///< when it changed, from what
    std::vector<Permit> m_permits;
    std::vector<Obligation> m_obligations;
    Watches m_watches;
    std::set<int> m_retries; ///< connectors launched on a requested port
    bool m_isRetryDue = false;
    std::set<int> m_stopped;
    int m_commandRestarts = 0;
    bool m_isCommandRestarting = false;
    Moment m_watchedUntil = -1;
    bool m_wasUnderWay = false;
    bool m_isAttempting = false;
    Moment m_attemptBegan = 0;
    Moment m_attemptLimit = 0;
    Moment m_lastCheck = 0;
    Moment m_settingsReadAt = -1;
    Moment m_lastAttempt = -1;
    Moment m_lastRestartAsked = -1;
};

} // namespace orvanta::simulation
