// SPDX-License-Identifier: MIT
// What comes over the release channel, and what the user makes of it.
#include "soak/deeds.h"
#include "soak/failure.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

namespace orvanta::soak {
namespace {

constexpr int kCommandLimitMs = 120'000;
const QString kCheck = QStringLiteral("Check for Runtime Updates");
const QString kUpdate = QStringLiteral("Update Desktop Connector");
const QString kRollBack = QStringLiteral("Rollback Runtime");
const QString kNoManifest = QStringLiteral("Runtime manifest was not available.");

} // namespace

void Deeds::command(const QString& text, const QStringList& outcomes) {
    const auto isIdle = [this] { return m_tray.user.canChoose(kCheck); };
    require(m_tray.waitUntil(isIdle), QStringLiteral("the runtime is never idle"));
    m_tray.user.choose(text);
    const auto isOver = [&] {
        const QString line = m_tray.user.said(QStringLiteral("Runtime: "));
        return isIdle() &&
               std::any_of(outcomes.begin(), outcomes.end(),
                           [&](const QString& outcome) { return line.startsWith(outcome); });
    };
    require(m_tray.waitUntil(isOver, kCommandLimitMs),
            text + QStringLiteral(" did not end in: ") + outcomes.join(QStringLiteral(" / ")));
}

void Deeds::offer(const QString& version, const QByteArray& archive) {
    QDir(m_tray.channel.path(QStringLiteral("out/beta"))).removeRecursively();
    m_tray.channel.offer(version, archive);
    command(kCheck, {QStringLiteral("Update available: ") + version});
}

void Deeds::userChecks() {
    QDir(m_tray.channel.path(QStringLiteral("out/beta"))).removeRecursively();
    const QString current = m_tray.inState("currentVersion");
    m_tray.channel.offer(current, m_goodArchive);
    command(kCheck, {QStringLiteral("Current (%1)").arg(current)});
}

void Deeds::channelIsAway() {
    QDir(m_tray.channel.path(QStringLiteral("out/beta"))).removeRecursively();
    command(kCheck, {kNoManifest});
}

void Deeds::archiveIsCut() {
    offer(QStringLiteral("1.%1.0").arg(++m_lastVersion), m_goodArchive);
    m_tray.channel.disturbArchive(QStringLiteral("cut"));
    command(kUpdate, {QStringLiteral("Runtime update failed: ")});
}

void Deeds::userUpdates() {
    const pid_t before = m_tray.connector().pid();
    const QString version = QStringLiteral("1.%1.0").arg(++m_lastVersion);
    offer(version, m_goodArchive);
    command(kUpdate, {QStringLiteral("Updated to ") + version});
    m_tray.awaitNewConnector(before);
    require(m_tray.connector().version() == version, version + QStringLiteral(" does not run"));
    require(m_tray.waitUntil([&] { return m_tray.versions().size() <= 2; }),
            QStringLiteral("old versions are not pruned"));
}

void Deeds::updateNeverComesUp() {
    const pid_t before = m_tray.connector().pid();
    const QString good = m_tray.inState("currentVersion");
    offer(QStringLiteral("1.%1.666").arg(++m_lastVersion), m_badArchive);
    command(kUpdate, {QStringLiteral("Rolled back to %1.").arg(good)});
    m_tray.awaitNewConnector(before);
    require(m_tray.connector().version() == good, good + QStringLiteral(" does not run"));
}

void Deeds::userRollsBack() {
    if (!m_tray.user.canChoose(kRollBack)) {
        userUpdates();
    }
    const bool isBad = m_tray.inState("previousVersion").endsWith(QStringLiteral(".666"));
    rollBack();
    if (isBad) {
        rollBack();
    }
}

void Deeds::rollBack() {
    const pid_t before = m_tray.connector().pid();
    const QString target = m_tray.inState("previousVersion");
    // The connector that is launched then looks at the channel, which may be away.
    command(kRollBack, {QStringLiteral("Rolled back to %1.").arg(target), kNoManifest});
    require(m_tray.inState("currentVersion") == target, QStringLiteral("not rolled back"));
    if (!target.endsWith(QStringLiteral(".666"))) {
        m_tray.awaitNewConnector(before);
        require(m_tray.connector().version() == target, target + QStringLiteral(" does not run"));
    }
}

void Deeds::strayVersionIsPruned() {
    const QString stray = m_tray.storePath(QStringLiteral("versions/0.9.%1").arg(m_lastVersion));
    require(QDir().mkdir(stray), QStringLiteral("cannot make ") + stray);
    require(m_tray.waitUntil([&] { return !QFileInfo::exists(stray); }),
            QStringLiteral("a stray version is not pruned"));
}

} // namespace orvanta::soak
