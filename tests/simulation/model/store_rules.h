// SPDX-License-Identifier: MIT
#pragma once

#include "simulation/model/record.h"
#include "simulation/model/supervision_rules.h"

#include <map>
#include <optional>
#include <set>
#include <vector>

namespace orvanta::simulation {

/// What must always hold of the store on the disk: the record can be read and forgets nothing, the
/// versions that it names stay complete, and only a version that answered is called healthy.
class StoreRules {
public:
    StoreRules(World& world, Verdict& verdict) : m_world(world), m_verdict(verdict) {}

    /// The supervision of the tray's life that begins; nothing between two lives.
    void follow(const SupervisionRules* supervision);
    /// Somebody else has changed the store; begins anew with what is there.
    void damaged();
    void removing(const QString& path);
    void launched(const Connector& connector);
    /// A usable status document has come; `choice` was the runtime chosen when it was asked for.
    void answered(std::int64_t choice);
    /// An update or a watch waits for its runtime to answer, and then confirms it.
    void setUpdating(bool isUpdating) { m_isUpdating = isUpdating; }
    void check();

    const std::optional<Record>& record() const { return m_record; }
    /// Whether a rollback is possible.
    bool canGoBack() const;
    /// When the current version changed last, and what the record said before.
    Moment lastSwitch() const { return m_lastSwitch; }
    const Record& beforeSwitch() const { return m_beforeSwitch; }
    bool isUpdating() const { return m_isUpdating; }
    Moment damagedAt() const { return m_damagedAt; }
    /// Whether the settings of the moment have the store used, or the channel asked at each start.
    bool isUsed() const;
    bool checksAtStart() const;
    /// When those settings changed last, or the disk.
    Moment settingsChanged() const { return m_settingsChanged; }
    /// After a confirmation and a while in which nothing happens.
    void checkPruned();

private:
    Moment now() const { return m_world.queue.now(); }
    void fail(const char* rule, const std::string& detail = {}) const;
    void checkRecord();
    void checkNewRecord();
    std::optional<QString> onlyNewTime(const QByteArray& bytes) const;
    bool isReadable() const;
    /// That version was current when an operation under way may have begun.
    bool wasHeld(const std::optional<QString>& version) const;
    Record originOf(const Record& after) const;
    void replaceRecord(std::optional<Record> after);
    void compare(const Record& before, const Record& after);
    void checkSwitch(const Record& before, const Record& after);
    void checkHealth(const Record& before, const Record& after);
    void checkVersions();
    void noteLeftovers();
    bool isComplete(const QString& version) const;
    /// The directory of the version that the worker is placing, held up in the middle.
    QString placedName() const;
    /// What is in staging, by the numbers that go up, the newest last.
    std::map<QString, QString> workInStaging() const;
    QString stagingPath() const;
    void watchSettings();

    World& m_world;
    Verdict& m_verdict;
    const SupervisionRules* m_supervision = nullptr;
    /// What the choice of a runtime depends on, and when it changed last.
    std::int64_t m_seenSettings = 0;
    Moment m_settingsChanged = 0;
    bool m_isUpdating = false;
    std::uint64_t m_seenTreeChanges = 0;
    std::uint64_t m_seenContentChanges = 0;
    std::uint64_t m_seenFailedReads = 0;
    bool m_haveNamesChanged = true;
    QByteArray m_bytes;
    std::optional<Record> m_record;
    /// What the record has said since the operations under way began.
    std::vector<Record> m_held;
    std::set<QString> m_wasComplete; ///< directories
    std::set<QString> m_replaced;    ///< directories that an installation is or was replacing
    /// The newest number in staging when the worker was last free: what was left there.
    QString m_leftNumber;
    bool m_wasHeldUp = false;
    /// The worker empties staging: what is still in there is placed by nobody.
    bool m_isStagingRemoved = false;
    std::uint64_t m_seenFailedChanges = 0;
    Moment m_damagedAt = -kDay;
    Moment m_lastSwitch = -1;
    Record m_beforeSwitch;
    Moment m_lastAnswer = -1;
    int m_answeredChoice = 0;
};

} // namespace orvanta::simulation
