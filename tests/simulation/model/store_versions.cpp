// SPDX-License-Identifier: MIT
#include "simulation/model/store_rules.h"

#include <QRegularExpression>

namespace orvanta::simulation {

bool StoreRules::isComplete(const QString& version) const {
    const auto real = realVersion(m_world.files,
                                  m_world.versionsPath() + QLatin1Char('/') + directoryOf(version));
    // A shipped runtime whose record cannot be read goes by that name, whatever it is.
    return real && (*real == version || version == QStringLiteral("bootstrap"));
}

QString StoreRules::stagingPath() const {
    return m_world.stateRoot() + QStringLiteral("/runtime/staging");
}

std::map<QString, QString> StoreRules::workInStaging() const {
    static const QRegularExpression kWork(QStringLiteral("^(.*)-([-0-9A-F]{36})(-[a-z]+)?$"));
    std::map<QString, QString> work;
    const QString staging = stagingPath();
    if (m_world.files.isDirectory(staging)) {
        for (const QString& name : m_world.files.contentsOfDirectory(staging)) {
            if (const auto match = kWork.match(name); match.hasMatch()) {
                work[match.captured(2)] = match.captured(1);
            }
        }
    }
    return work;
}

QString StoreRules::placedName() const {
    if (!m_world.work.isHeldUp() || m_isStagingRemoved) {
        return {};
    }
    const auto work = workInStaging();
    return work.empty() || work.rbegin()->first <= m_leftNumber ? QString() : work.rbegin()->second;
}

void StoreRules::noteLeftovers() {
    const auto work = workInStaging();
    m_leftNumber = work.empty() ? QString() : work.rbegin()->first;
}

void StoreRules::removing(const QString& path) {
    m_isStagingRemoved = m_isStagingRemoved || path == stagingPath();
    const QString parent = m_world.versionsPath() + QLatin1Char('/');
    const QString name = path.mid(parent.size());
    if (!path.startsWith(parent) || name.contains(QLatin1Char('/'))) {
        return;
    }
    if (m_world.work.isRunningJob()) {
        m_replaced.insert(name);
        return;
    }
    const bool isNamed = m_record && (name == directoryOf(m_record->current) ||
                                      name == directoryOf(m_record->previous.value_or(QString())));
    if (name == placedName()) {
        fail("a version that is being placed is pruned", name.toStdString());
    }
    if (isNamed || (m_supervision != nullptr && m_supervision->chosenRoot() == path)) {
        fail("a version that is still needed is pruned", name.toStdString());
    }
}

void StoreRules::checkVersions() {
    if (!m_record) {
        return;
    }
    for (const auto& version : {std::optional(m_record->current), m_record->previous}) {
        if (!version) {
            continue;
        }
        const QString name = directoryOf(*version);
        if (isComplete(*version)) {
            m_wasComplete.insert(name);
            if (!m_world.work.isHeldUp()) {
                m_replaced.erase(name);
            }
        } else if (m_wasComplete.contains(name) && !m_replaced.contains(name)) {
            fail("a version that the record names is not complete any more", name.toStdString());
        }
    }
    if (m_world.files.itemExists(m_world.versionsPath() + QStringLiteral("/") +
                                 directoryOf(m_record->current) + QStringLiteral("/runtime.zip"))) {
        fail("an archive is left in a version");
    }
}

/// A tray that runs a version of the store confirms it with every answer, and keeps no others then.
void StoreRules::checkPruned() {
    if (!m_record || !m_supervision->chosenName() ||
        !m_world.files.isDirectory(m_world.versionsPath())) {
        return;
    }
    std::set<QString> kept;
    for (const auto& version :
         {std::optional(m_record->current), m_record->previous, m_record->lastHealthy}) {
        kept.insert(directoryOf(version.value_or(m_record->current)));
    }
    for (const QString& name : m_world.files.contentsOfDirectory(m_world.versionsPath())) {
        if (!kept.contains(name)) {
            fail("a version stays that nothing needs", name.toStdString());
        }
    }
}

} // namespace orvanta::simulation
