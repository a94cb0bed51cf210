// SPDX-License-Identifier: MIT
// What is left by a start that is killed while it puts right what another one left.
#include "integration/crash_points/crash_points_test.h"

#include <QDir>

namespace orvanta {

/// The start is not killed but held up at its calls: what it has left by then is what one leaves
/// that is killed there, and is put aside if it is new. Of the calls, one in so many is looked at,
/// beginning with another one after each store, since the starts after most stores are alike.
void CrashPointsTest::tryKillsOfRecovery() {
    restore(m_leftBehind);
    QDir().mkpath(m_leftByRecovery);
    const auto recover = [this] { return start(kNextStart)->resolve(); };
    int stores = 0;
    int call = m_tally.states;
    const Watch watch{.onCall = [&](const WatchedCall&) {
        if (++call % kRecoveryStride != 0) {
            return;
        }
        ++m_tally.secondKills;
        const Snapshot left = snapshotOf(m_stateRoot);
        if (!m_judged.contains(left) && m_judgedAfterRecovery.insert(left).second) {
            copyTree(m_stateRoot, m_leftByRecovery + u'/' + QString::number(stores++));
        }
    }};
    const auto ending = runSupervised(recover, {}, watch);
    ASSERT_TRUE(ending && ending->report && ending->report->succeeded);
    for (int store = 0; store < stores; ++store) {
        SCOPED_TRACE("second kill, store " + std::to_string(store));
        restore(m_leftByRecovery + u'/' + QString::number(store));
        ++m_tally.statesOfRecovery;
        expectOldOrNew(recorded());
        expectWholeVersions();
        expectFreshStart(kThirdStart);
        expectOldOrNew(recorded());
        expectWholeVersions();
    }
    QDir(m_leftByRecovery).removeRecursively();
}

} // namespace orvanta
