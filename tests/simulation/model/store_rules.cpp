// SPDX-License-Identifier: MIT
#include "simulation/model/store_rules.h"

#include <algorithm>

namespace orvanta::simulation {

namespace {

const ConfigFile& configOf(const World& world) {
    return kConfigs.at(static_cast<std::size_t>(world.conditions[Condition::config]));
}

} // namespace

void StoreRules::fail(const char* rule, const std::string& detail) const {
    m_verdict.fail(now(), rule, detail);
}

void StoreRules::follow(const SupervisionRules* supervision) {
    m_supervision = supervision;
    m_held.clear();
    m_isStagingRemoved = false;
    m_lastAnswer = -1;
    m_seenFailedReads = m_world.files.failedReads;
}

void StoreRules::damaged() {
    m_bytes = m_world.files.peek(m_world.recordPath()).value_or(QByteArray());
    replaceRecord(recordFrom(m_bytes));
    m_wasComplete.clear();
    m_damagedAt = now();
}

bool StoreRules::isUsed() const {
    return configOf(m_world).storeEnabled && m_world.environment.values.all().empty();
}

bool StoreRules::checksAtStart() const {
    return configOf(m_world).checksAtStart;
}

void StoreRules::watchSettings() {
    constexpr std::int64_t kMany = 100;
    const Conditions& conditions = m_world.conditions;
    const auto settings = conditions[Condition::config] * kMany + conditions[Condition::disk];
    if (settings != m_seenSettings) {
        m_seenSettings = settings;
        m_settingsChanged = now();
    }
}

bool StoreRules::isReadable() const {
    return m_world.conditions.as<Disk>(Condition::disk) != Disk::unreadable;
}

bool StoreRules::canGoBack() const {
    return m_record && m_record->previous && m_record->previous != m_record->current &&
           isComplete(*m_record->previous);
}

void StoreRules::launched(const Connector& connector) {
    const QString executable = connector.options().executable;
    const QString root = executable.chopped(QStringLiteral("/node-runtime/node").size());
    const auto version = realVersion(m_world.files, root);
    if (!version) {
        fail("an incomplete runtime is launched", root.toStdString());
        return;
    }
    watchSettings();
    if (m_settingsChanged >= m_supervision->attemptBegan() || !isReadable()) {
        return;
    }
    const bool isShipped = root == m_world.locations.resourceRoot();
    const auto record = recordFrom(m_world.files.peek(m_world.recordPath()).value_or(QByteArray()));
    if (isShipped) {
        if (isUsed() && record && isComplete(record->current)) {
            fail("the shipped runtime is launched though the store has one");
        }
    } else if (!isUsed()) {
        fail("a runtime of the store is launched though the store is switched off");
    } else if (!record || m_supervision->chosenName() != directoryOf(record->current) ||
               !isComplete(record->current)) {
        fail("another runtime is launched than the record names", version->toStdString());
    }
}

void StoreRules::answered(std::int64_t choice) {
    m_lastAnswer = now();
    m_answeredChoice = static_cast<int>(choice);
}

void StoreRules::check() {
    watchSettings();
    const WorldFiles& files = m_world.files;
    const bool hasTreeChanged = m_seenTreeChanges != files.treeChanges;
    if (hasTreeChanged || m_seenContentChanges != files.contentChanges) {
        m_seenContentChanges = files.contentChanges;
        checkRecord();
    }
    if (hasTreeChanged || m_haveNamesChanged) {
        m_seenTreeChanges = files.treeChanges;
        m_haveNamesChanged = false;
        checkVersions();
    }
    const bool isHeldUp = m_world.work.isHeldUp();
    if (!isHeldUp && (hasTreeChanged || m_wasHeldUp)) {
        noteLeftovers();
    }
    m_wasHeldUp = isHeldUp;
    m_isStagingRemoved = m_isStagingRemoved && isHeldUp;
    const DesktopConnectorManager& manager = *m_world.manager();
    if (!manager.startInProgress() && !manager.runtimeUpdateInProgress()) {
        m_held.clear();
    }
}

void StoreRules::checkRecord() {
    const auto bytes = m_world.files.peek(m_world.recordPath());
    if (!bytes) {
        if (m_record) {
            fail("the record is gone");
        }
        return;
    }
    if (*bytes == m_bytes) {
        return;
    }
    if (const auto time = m_record ? onlyNewTime(*bytes) : std::nullopt) {
        m_bytes = *bytes;
        Record after = *m_record;
        after.lastHealthyAt = *time;
        checkHealth(originOf(after), after);
        replaceRecord(after);
        return;
    }
    m_bytes = *bytes;
    m_haveNamesChanged = true;
    checkNewRecord();
}

/// The usual change, after every answer: a record that differs from the last one in nothing but the
/// digits of that time can be read if that one could.
std::optional<QString> StoreRules::onlyNewTime(const QByteArray& bytes) const {
    static const QByteArray kMember = "\"lastHealthyAt\" : \"";
    const qsizetype start = bytes.indexOf(kMember);
    if (bytes.size() != m_bytes.size() || start < 0) {
        return std::nullopt;
    }
    constexpr qsizetype kTimeLength = 20;
    const qsizetype time = start + kMember.size();
    const bool isRestEqual = std::equal(bytes.begin(), bytes.begin() + time, m_bytes.begin()) &&
                             std::equal(bytes.begin() + time + kTimeLength, bytes.end(),
                                        m_bytes.begin() + time + kTimeLength);
    return isRestEqual ? std::optional(QString::fromLatin1(bytes.mid(time, kTimeLength)))
                       : std::nullopt;
}

void StoreRules::replaceRecord(std::optional<Record> after) {
    if (m_record) {
        m_held.push_back(*m_record);
    }
    m_record = std::move(after);
}

bool StoreRules::wasHeld(const std::optional<QString>& version) const {
    return std::any_of(m_held.begin(), m_held.end(),
                       [&version](const Record& each) { return each.current == version; });
}

/// What the one who wrote `after` had read: an operation that cannot read the record when it has
/// waited goes on from what it read before, whatever others have written meanwhile.
Record StoreRules::originOf(const Record& after) const {
    if (isReadable() || after == *m_record) {
        return *m_record;
    }
    auto origin = std::find(m_held.begin(), m_held.end(), after);
    const auto isLeft = [&after](const Record& each) {
        return after.previous == each.current && after.lastHealthy == each.lastHealthy &&
               after.lastHealthyAt == each.lastHealthyAt;
    };
    if (origin == m_held.end() && after.current != m_record->current && !isLeft(*m_record)) {
        origin = std::find_if(m_held.begin(), m_held.end(), isLeft);
    }
    return origin == m_held.end() ? *m_record : *origin;
}

void StoreRules::checkNewRecord() {
    const auto after = recordFrom(m_bytes);
    if (!after) {
        fail("the record cannot be read", m_bytes.toStdString());
    } else if (m_record) {
        const Record before = originOf(*after);
        compare(before, *after);
        if (before.current != after->current && !after->isSeed) {
            m_lastSwitch = now();
            m_beforeSwitch = before;
        }
    }
    replaceRecord(after);
}

void StoreRules::compare(const Record& before, const Record& after) {
    if (!isReadable()) {
        // Who cannot read goes on with the record it began with, and versions that only that one
        // names may have been pruned since.
        std::erase_if(m_wasComplete, [&before = *m_record](const QString& name) {
            return name != directoryOf(before.current) &&
                   name != directoryOf(before.previous.value_or(QString()));
        });
    }
    if (after.isSeed && m_seenFailedReads != m_world.files.failedReads) {
        // What cannot be read counts as not there, and the store is made anew.
        m_seenFailedReads = m_world.files.failedReads;
        m_wasComplete.clear();
        return;
    }
    checkSwitch(before, after);
    checkHealth(before, after);
    m_seenFailedChanges = m_world.files.failedChanges;
}

void StoreRules::checkSwitch(const Record& before, const Record& after) {
    const bool isInstallation = after.isPending && after.previous == before.current;
    if (before.current != after.current) {
        const bool isDiskSound = m_seenFailedChanges == m_world.files.failedChanges;
        if (after.previous != before.current) {
            fail("the version to go back to is lost", before.current.toStdString());
        } else if (isDiskSound && after.updatedAt != m_world.clock.now().toString(Qt::ISODate)) {
            fail("a switch of old is made again", after.current.toStdString());
        } else if (isDiskSound && now() > m_damagedAt + kHour && !isComplete(after.current)) {
            fail("the store switches to an incomplete version", after.current.toStdString());
        }
    } else if (before.previous != after.previous && !isInstallation) {
        fail("the version to go back to changes without a switch");
    } else if (!before.isPending && after.isPending && !isInstallation &&
               !wasHeld(after.previous)) {
        // It may have become current in another way while it was installed.
        fail("a version is pending that was not installed");
    }
}

void StoreRules::checkHealth(const Record& before, const Record& after) {
    const bool isSettled = before.current == after.current && before.isPending && !after.isPending;
    // Times are whole seconds: a version that was confirmed, installed again and confirmed within
    // one leaves the same one twice.
    const bool isSame = isSettled && after.lastHealthy == after.current && m_lastAnswer == now();
    const bool isConfirmed = before.lastHealthy != after.lastHealthy ||
                             before.lastHealthyAt != after.lastHealthyAt || isSame;
    if (!isConfirmed) {
        // A mandatory update to the current version leaves no other one to go back to.
        if (isSettled && after.previous != after.current) {
            fail("a pending version is settled without an answer");
        }
        return;
    }
    const QString healthy = after.lastHealthy.value_or(QString());
    if (m_supervision == nullptr || m_lastAnswer != now()) {
        fail("a version is called healthy though nothing answered", healthy.toStdString());
        return;
    }
    const auto chosen = m_supervision->chosenName();
    const QString name = directoryOf(healthy);
    // A launch that was refused leaves nobody whom a late answer of the same runtime could be
    // about.
    const bool isOfRuntime =
        m_supervision->held() == 0 && m_answeredChoice >= m_supervision->sameRuntimeSince();
    const bool isOfChoice = m_answeredChoice != 0 && chosen == name &&
                            (m_answeredChoice == m_supervision->choice() || isOfRuntime);
    const bool isOfWatch = (m_isUpdating || m_supervision->isWatching()) &&
                           name == chosen.value_or(directoryOf(after.current));
    if (!isOfChoice && !isOfWatch) {
        fail("a version is called healthy that did not answer",
             healthy.toStdString() + " instead of " +
                 chosen.value_or(QStringLiteral("none")).toStdString());
    }
    if (isSettled && healthy != after.current) {
        fail("a pending version is settled by another one");
    }
}

} // namespace orvanta::simulation
