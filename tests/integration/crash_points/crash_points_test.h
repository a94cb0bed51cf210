// SPDX-License-Identifier: MIT
#pragma once

#include "integration/crash_points/runtime_files.h"
#include "integration/crash_points/store_process.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include <functional>
#include <set>

namespace orvanta {

/// One operation on the store, and what it makes of what.
struct StoreOperation {
    const char* name = "";
    std::function<Report(StoreProcess&)> run;
    /// Nothing when there is no store before.
    std::optional<MacRuntimeCurrentState> before;
    MacRuntimeCurrentState after;
    /// The versions directory when it is over.
    std::set<std::string> versionsAfter;
    /// A version that is taken away before its successor comes, so that a start in between goes
    /// without it.
    std::optional<QString> replaced;
    /// That many calls and more, or else not all are seen.
    std::size_t fewestCalls = 1;
};

// For messages
std::string traceOf(const Fault& fault, const SupervisedEnding& ending);
std::string textOf(const std::optional<MacRuntimeCurrentState>& state);

/// Runs an operation once for each of its calls that change the file system and each way in which
/// it can end there, and looks each time at what a fresh start makes of it. What a process leaves
/// that is killed after a call is what one leaves that is killed before its next, and after the
/// last one, what an undisturbed one leaves.
class CrashPointsTest : public ::testing::Test {
protected:
    CrashPointsTest();

    // What there is before

    void ship(const char* version);
    /// Puts a complete version into the store.
    void store(const char* version);
    /// What the channel offers; in the archive the runtime is in a folder, or at the top.
    void offer(const char* version, bool inFolder);
    static MacRuntimeCurrentState stateOf(const char* current, const char* previous = nullptr);
    QString inStateRoot(const char* path) const;
    void write(const QString& path, const QByteArray& bytes) const;

    /// To be called once, when everything is there.
    void tryEveryPoint(const StoreOperation& operation);

private:
    struct Tally {
        std::size_t calls = 0;
        int kills = 0;
        int killsAlone = 0;
        int failures = 0;
        int states = 0; ///< that differ
        int secondKills = 0;
        int statesOfRecovery = 0; ///< that differ
        std::size_t reads = 0;
        int failuresToRead = 0;
        int statesAfterReads = 0;   ///< that differ
        int readsWithoutRecord = 0; ///< so that the store was seeded anew
        int readsThatLostReplaced =
            0; ///< the version that is replaced, the new one not being there
    };

    static constexpr int kRecoveryStride = 8;
    static constexpr std::size_t kToolStride = 8;

    // Which start of the application it is
    static constexpr int kThisStart = 0;
    static constexpr int kNextStart = 1;
    static constexpr int kSecondTry = 2;
    static constexpr int kThirdStart = 3;

    std::unique_ptr<StoreProcess> start(int number) const;
    void setStage(const StoreOperation& operation);
    std::optional<SupervisedEnding> run(const Fault& fault, const Watch& watch = {}) const;
    void tryKills(int call, bool isByOtherProgram);
    void tryFailures(int call);
    void report() const;

    // Each looks at what there is now

    void judge(const SupervisedEnding& ending, const Fault& fault);
    void judgeStore();
    /// The store as it is now; checks that nothing else has changed.
    Snapshot storeSnapshot() const;
    std::optional<MacRuntimeCurrentState> recorded() const;
    void expectOldOrNew(const std::optional<MacRuntimeCurrentState>& state) const;
    void expectTrueReport(const SupervisedEnding& ending, const Fault& fault) const;
    void expectWholeVersions() const;
    /// `number`: of the start.
    void expectFreshStart(int number) const;
    void expectSecondTry() const;
    /// What is in `folder` in place of the store.
    void restore(const QString& folder) const;

    // A second kill, while the next start recovers

    void tryKillsOfRecovery();

    // Files that cannot be read

    void tryReads();
    void tryFailuresToRead(const WatchedCall& call, int number);
    void judgeReads(const Fault& fault);
    void expectNothingLost(const Report& report, bool isRecordUnread);
    void judgeStoreAfterReads() const;

    QTemporaryDir m_folder;
    QTemporaryDir m_scratch;
    QString m_resourceRoot;
    QString m_stateRoot;
    QString m_template;
    QString m_leftBehind;     ///< the last store that had not been seen before
    QString m_leftByRecovery; ///< a folder for each store
    QString m_shipped;
    QString m_offered;
    QByteArray m_archive;
    StoreOperation m_operation;
    Watch m_watchReading;
    Snapshot m_outside;
    Snapshot m_left; ///< by the last run
    Snapshot m_leftByKill;
    /// What has been looked at already.
    std::set<Snapshot> m_judged;
    std::set<Snapshot> m_judgedAfterRecovery;
    std::set<Snapshot> m_judgedAfterReads;
    Tally m_tally;
};

} // namespace orvanta
