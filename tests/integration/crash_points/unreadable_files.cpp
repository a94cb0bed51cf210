// SPDX-License-Identifier: MIT
// What an operation does to the store when it cannot read it.
#include "integration/crash_points/crash_points_test.h"

#include <QDir>

#include <algorithm>
#include <cerrno>

namespace orvanta {
namespace {

using Versions = std::vector<std::optional<QString>>;

Versions versionsIn(const std::optional<MacRuntimeCurrentState>& state) {
    return state ? Versions{state->currentVersion, state->previousVersion} : Versions{};
}

/// A file that opens is read if its status can be had, too.
bool wasRead(const SupervisedEnding& ending, const std::string& path) {
    return std::any_of(ending.calls.begin(), ending.calls.end(), [&](const WatchedCall& call) {
        return call.path == path && !call.opens && !call.failed;
    });
}

bool wasOpened(const SupervisedEnding& ending, const std::string& path) {
    return std::any_of(ending.calls.begin(), ending.calls.end(),
                       [&](const WatchedCall& call) { return call.path == path && call.opens; });
}

} // namespace

void CrashPointsTest::tryReads() {
    m_watchReading.readingBelow = m_stateRoot.toStdString();
    const auto undisturbed = run({}, m_watchReading);
    ASSERT_TRUE(undisturbed && undisturbed->report && undisturbed->report->succeeded);
    const auto& calls = undisturbed->calls;
    m_tally.reads = calls.size();
    ASSERT_GT(m_tally.reads, 0U);
    std::set<std::string> paths;
    for (std::size_t index = 0; index < calls.size() && !HasFailure(); ++index) {
        // The archive tool goes from entry to entry in the same way.
        if (calls[index].byOtherProgram && index % kToolStride != 0) {
            continue;
        }
        tryFailuresToRead(calls[index], static_cast<int>(index + 1));
        if (paths.insert(calls[index].path).second) {
            judgeReads(
                {Fault::Kind::failingAtPath, static_cast<int>(index + 1), EIO, calls[index].path});
        }
    }
}

void CrashPointsTest::tryFailuresToRead(const WatchedCall& call, int number) {
    if (!call.opens) {
        judgeReads({Fault::Kind::failing, number, EIO});
        return;
    }
    for (const int error : {EIO, EMFILE, EACCES}) {
        judgeReads({Fault::Kind::failing, number, error});
    }
    judgeReads({Fault::Kind::failingFromThenOn, number, EIO});
}

void CrashPointsTest::judgeReads(const Fault& fault) {
    const SupervisedEnding ending = run(fault, m_watchReading).value();
    SCOPED_TRACE(traceOf(fault, ending));
    ++m_tally.failuresToRead;
    ASSERT_TRUE(ending.report);
    const std::string record = inStateRoot("runtime/current.json").toStdString();
    // Such a record counts as missing, by design: whoever has one that can never be read gets a
    // new store.
    const bool isRecordUnread =
        m_operation.before && wasOpened(ending, record) && !wasRead(ending, record);
    m_tally.readsWithoutRecord += isRecordUnread ? 1 : 0;
    expectNothingLost(*ending.report, isRecordUnread);
    const Snapshot left = storeSnapshot();
    if (!m_judged.contains(left) && m_judgedAfterReads.insert(left).second) {
        ++m_tally.statesAfterReads;
        judgeStoreAfterReads();
    }
}

/// Whatever could not be read: the versions that the record named are there, unless the operation
/// has made others of them.
void CrashPointsTest::expectNothingLost(const Report& report, bool isRecordUnread) {
    const auto state = recorded();
    const Versions old = versionsIn(m_operation.before);
    const bool isSeeded = state && versionsIn(state) == Versions{m_shipped, std::nullopt};
    if (!(isRecordUnread && isSeeded)) {
        EXPECT_TRUE(versionsIn(state) == old || versionsIn(state) == versionsIn(m_operation.after))
            << textOf(state);
        if (!report.succeeded) {
            EXPECT_EQ(textOf(state), textOf(m_operation.before));
        }
    }
    for (const auto& version : old) {
        const QString folder = inStateRoot("runtime/versions/") + version.value_or(QString());
        if (!version || isWhole(folder, *version)) {
            continue;
        }
        // Never a part of it.
        EXPECT_TRUE(version == m_operation.replaced && !report.succeeded && !QDir(folder).exists())
            << version->toStdString() << " is lost";
        ++m_tally.readsThatLostReplaced;
    }
}

void CrashPointsTest::judgeStoreAfterReads() const {
    expectWholeVersions();
    expectFreshStart(kNextStart);
    const Report report = m_operation.run(*start(kSecondTry));
    EXPECT_TRUE(report.succeeded) << report.message;
    expectWholeVersions();
    expectFreshStart(kThirdStart);
    storeSnapshot();
}

} // namespace orvanta
