// SPDX-License-Identifier: MIT
#pragma once

#include "simulation/model/store_rules.h"
#include "simulation/model/supervision_rules.h"

#include <map>
#include <set>

namespace orvanta::simulation {

/// One life of the tray: what the user's commands lead to, and the two lines that report it.
class CommandRules {
public:
    CommandRules(World& world, Verdict& verdict, SupervisionRules& supervision, StoreRules& store)
        : m_world(world), m_verdict(verdict), m_supervision(supervision), m_store(store) {}

    /// Just before the menu learns of it.
    void clicked(MenuEntryId entry);
    void slept(Moment duration) { m_commandBegan += duration; }
    void requestSent(Purpose purpose);
    void replyHandled(const ReplySeen& reply);
    void launched() {
        m_isLaunched = true;
        m_isRestartOwed = false;
    }
    /// Every start begins with it.
    void settingsRead() { m_isRestartOwed = false; }
    void check();

private:
    Moment now() const { return m_world.queue.now(); }
    void fail(const char* rule, const std::string& detail = {}) const;
    std::uint64_t failedFiles() const {
        return m_world.files.failedChanges + m_world.files.failedReads;
    }
    void checkLines();
    void checkCommand();
    void commandChanged(bool isInProgress);
    void checkMenu() const;

    World& m_world;
    Verdict& m_verdict;
    SupervisionRules& m_supervision;
    StoreRules& m_store;
    /// Requests that a click calls for and that have not been sent yet.
    std::map<Purpose, int> m_awaited;
    Moment m_clickedAt = -1;
    bool m_isInProgress = false;
    Moment m_commandClickedAt = -1;
    /// A runtime command was chosen and has not been seen to begin.
    bool m_isArmed = false;
    /// Of all runtime commands chosen at that moment: the first may end at once.
    int m_restartsClicked = 0;
    bool m_isUpdateClicked = false;
    Moment m_commandBegan = 0;
    bool m_isLaunched = false;
    /// The command under way has to restart the connector if it switches the runtime.
    bool m_isRestarting = false;
    bool m_isRestartOwed = false;
    bool m_isInstalling = false;
    std::uint64_t m_failedFiles = 0;
    Moment m_seenSwitch = -1;
    int m_dashboards = 0;
    QString m_seenLine;
    std::optional<QString> m_seenError;
};

} // namespace orvanta::simulation
