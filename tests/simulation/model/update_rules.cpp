// SPDX-License-Identifier: MIT
#include "simulation/model/update_rules.h"

#include <algorithm>

namespace orvanta::simulation {

namespace {

constexpr Moment kCheckInterval = 6 * kHour;
/// More than a watch takes that began with an earlier installation of the same version.
constexpr Moment kLongestTrial = 40 * kMinute;
constexpr int kAttempts = 20;

/// The order of all versions there are, by hand; equal ones count as the same.
int rankOf(const QString& version) {
    static const std::map<QString, int> kRanks = {
        {QStringLiteral("bootstrap"), 0},  {QStringLiteral(".."), 0},
        {QStringLiteral("1.3.1"), 1},      {QStringLiteral("1.3.2"), 2},
        {QStringLiteral("1.4.0"), 3},      {QStringLiteral("v1.4.0"), 3},
        {QStringLiteral("1.4.0/a:1"), 3},  {QStringLiteral("1.4.1"), 4},
        {QStringLiteral("2.0.0-rc.1"), 5}, {QStringLiteral("2.0.0"), 6},
        {QStringLiteral("3.0"), 7},        {QStringLiteral("3.1"), 8},
        {QStringLiteral("4.0"), 9},        {QStringLiteral("10.0"), 10},
        {QStringLiteral("11.0"), 11},
    };
    return kRanks.at(version);
}

} // namespace

UpdateRules::UpdateRules(World& world, Verdict& verdict, const SupervisionRules& supervision,
                         StoreRules& store)
    : m_world(world), m_verdict(verdict), m_supervision(supervision), m_store(store),
      m_lastLook(world.queue.now()), m_seenSwitch(store.lastSwitch()) {
    const std::int64_t shipped = world.conditions[Condition::shipped];
    if (shipped >= 0) {
        m_shipped = QString::fromLatin1(kVersions.at(static_cast<std::size_t>(shipped)));
    }
}

void UpdateRules::fail(const char* rule, const std::string& detail) const {
    m_verdict.fail(now(), rule, detail);
}

void UpdateRules::clicked(MenuEntryId entry) {
    if (entry == MenuEntryId::rollback) {
        m_rollbackClicked = now();
    }
}

void UpdateRules::slept(Moment duration) {
    m_lastLook += duration;
    for (auto& [version, trial] : m_trials) {
        trial.lastPending += duration;
    }
}

void UpdateRules::requestSent(Purpose purpose) {
    m_statusRequests += purpose == Purpose::status ? 1 : 0;
}

void UpdateRules::replied(const ReplySeen& reply) {
    if (reply.purpose == Purpose::manifest) {
        m_offers.emplace_back(now(), reply.offer);
    }
}

/// Whether nothing but the start itself had a say in what it launches.
bool UpdateRules::isStartJudged() const {
    const Moment began = m_supervision.attemptBegan();
    return m_store.isUsed() && m_store.settingsChanged() < began &&
           m_world.files.failedChanges == m_failedChanges && m_store.damagedAt() < began &&
           m_lastRollback < began && m_rollbackClicked < began &&
           m_world.conditions.as<Disk>(Condition::disk) != Disk::unreadable &&
           !m_world.manager()->runtimeUpdateInProgress();
}

/// After the store has looked at the record.
void UpdateRules::launched() {
    m_hasUpdateLaunched = m_hasUpdateLaunched || m_store.isUpdating();
    const Moment began = m_supervision.attemptBegan();
    std::erase_if(m_offers, [began](const auto& offer) { return offer.first < began; });
    const auto& record = m_store.record();
    if (!record || !isStartJudged()) {
        return;
    }
    const int rank = rankOf(record->current);
    if (!m_shipped.isEmpty() && rankOf(m_shipped) > rank && !record->isPending) {
        fail("a newer shipped runtime is not taken into use", record->current.toStdString());
    }
    const bool hasOneOffer = m_store.checksAtStart() && m_offers.size() == 1;
    if (const auto offer = hasOneOffer ? m_offers.front().second : std::nullopt) {
        const bool isTooOld = !offer->minimum.isEmpty() && rankOf(offer->minimum) > rank;
        if (isTooOld && record->current != offer->version) {
            fail("a mandatory update is left out", record->current.toStdString());
        }
    }
}

void UpdateRules::checkRollback(const Record& before) {
    m_lastRollback = now();
    if (m_rollbackClicked == now()) {
        return;
    }
    if (!before.isPending) {
        if (!m_store.isUpdating()) {
            fail("a version is given up that was not on trial", before.current.toStdString());
        }
        return;
    }
    const std::int64_t attempts = m_statusRequests - requestsBeforeTrial(before.current);
    if (attempts < kAttempts) {
        fail("a version is given up before its time", std::to_string(attempts) + " attempts");
    }
}

/// An update waits for whatever its restart brings, also when that is installed once more
/// meanwhile.
std::int64_t UpdateRules::requestsBeforeTrial(const QString& version) const {
    const auto trial = m_trials.find(version);
    const std::int64_t before =
        trial == m_trials.end() ? m_statusRequests : trial->second.requestsBefore;
    return m_store.isUpdating() ? std::min(before, m_requestsBeforeUpdate) : before;
}

void UpdateRules::checkSwitch(const Record& before, const Record& after) {
    const bool isStarting = m_supervision.isStarting();
    if (after.isPending) {
        if (isStarting) {
            return;
        }
        if (!m_store.isUpdating()) {
            fail("a version is installed that nobody asked for", after.current.toStdString());
        } else if (rankOf(after.current) <= rankOf(before.current)) {
            fail("an update installs what is not newer", after.current.toStdString());
        }
        return;
    }
    if (after.current != before.previous) {
        return;
    }
    const bool isPromotion = after.current == m_shipped && isStarting;
    if (!isPromotion) {
        checkRollback(before);
    } else if (m_supervision.isWatching() || m_store.isUpdating()) {
        // The same switch may be the end of a watch or of an update.
        m_lastRollback = now();
    }
}

void UpdateRules::followTrials() {
    const std::int64_t requestsBefore = m_requestsAtLastCheck;
    m_requestsAtLastCheck = m_statusRequests;
    m_hasUpdateLaunched = m_hasUpdateLaunched && m_store.isUpdating();
    if (!m_hasUpdateLaunched) {
        m_requestsBeforeUpdate = m_statusRequests;
    }
    const auto& record = m_store.record();
    if (!record) {
        return;
    }
    if (!record->isPending) {
        if (record->lastHealthy == record->current && !m_supervision.isWatching()) {
            m_trials.erase(record->current);
        }
        return;
    }
    const auto [each, isNew] = m_trials.try_emplace(record->current);
    Trial& trial = each->second;
    if (isNew || now() > trial.lastPending + kLongestTrial) {
        trial.requestsBefore = requestsBefore;
    }
    trial.lastPending = now();
}

void UpdateRules::check() {
    if (m_store.lastSwitch() != m_seenSwitch) {
        m_seenSwitch = m_store.lastSwitch();
        if (m_store.record()) {
            checkSwitch(m_store.beforeSwitch(), *m_store.record());
        }
    }
    followTrials();
    const DesktopConnectorManager& manager = *m_world.manager();
    if (!manager.startInProgress()) {
        m_failedChanges = m_world.files.failedChanges;
    }
    if (manager.runtimeUpdateInProgress()) {
        m_lastLook = now();
    }
    if (m_supervision.isSupervising() && !m_supervision.isQuitting() &&
        now() > m_lastLook + kCheckInterval + kMinute) {
        fail("nobody looks for updates any more");
    }
}

} // namespace orvanta::simulation
