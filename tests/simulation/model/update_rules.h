// SPDX-License-Identifier: MIT
#pragma once

#include "simulation/model/store_rules.h"
#include "simulation/model/supervision_rules.h"

#include <deque>
#include <map>
#include <optional>

namespace orvanta::simulation {

/// One life of the tray: what the channel's offers and the shipped runtime lead to, and when a
/// version is given up.
class UpdateRules {
public:
    UpdateRules(World& world, Verdict& verdict, const SupervisionRules& supervision,
                StoreRules& store);

    /// Just before the menu learns of it.
    void clicked(MenuEntryId entry);
    void slept(Moment duration);
    /// Every start and every check begins with it.
    void settingsRead() { m_lastLook = now(); }
    void requestSent(Purpose purpose);
    void replied(const ReplySeen& reply);
    void launched();
    void check();

private:
    Moment now() const { return m_world.queue.now(); }
    void fail(const char* rule, const std::string& detail = {}) const;
    void checkSwitch(const Record& before, const Record& after);
    void checkRollback(const Record& before);
    std::int64_t requestsBeforeTrial(const QString& version) const;
    bool isStartJudged() const;
    void followTrials();

    World& m_world;
    Verdict& m_verdict;
    const SupervisionRules& m_supervision;
    StoreRules& m_store;
    /// The shipped runtime; empty without a record.
    QString m_shipped;
    /// When somebody last began to see whether there is something newer.
    Moment m_lastLook;
    Moment m_rollbackClicked = -1;
    Moment m_lastRollback = -1;
    Moment m_seenSwitch;
    /// The replies to requests for the manifest, since the start under way began.
    std::deque<std::pair<Moment, std::optional<Offer>>> m_offers;
    std::uint64_t m_failedChanges = 0;
    struct Trial {
        /// The requests for the status of this life before it. Those after it, polls among them,
        /// count as its attempts also while the record is lost: the watch goes on until it has
        /// counted twenty.
        std::int64_t requestsBefore = 0;
        Moment lastPending = 0;
    };
    /// Of each version that awaited its confirmation in this life.
    std::map<QString, Trial> m_trials;
    std::int64_t m_statusRequests = 0;
    std::int64_t m_requestsAtLastCheck = 0;
    /// Before the first launch of the update under way.
    std::int64_t m_requestsBeforeUpdate = 0;
    bool m_hasUpdateLaunched = false;
};

} // namespace orvanta::simulation
