// SPDX-License-Identifier: MIT
#include "simulation/model/record.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace orvanta::simulation {

namespace {

std::optional<QString> member(const QJsonObject& object, QLatin1String key) {
    const auto found = object.constFind(key);
    return found == object.constEnd() ? std::nullopt : std::optional(found->toString());
}

} // namespace

std::optional<Record> recordFrom(const QByteArray& bytes) {
    const QJsonObject object = QJsonDocument::fromJson(bytes).object();
    const auto current = member(object, QLatin1String("currentVersion"));
    if (!current || !object.contains(QLatin1String("channel"))) {
        return std::nullopt;
    }
    Record record;
    record.current = *current;
    record.previous = member(object, QLatin1String("previousVersion"));
    record.lastHealthy = member(object, QLatin1String("lastHealthyVersion"));
    record.lastHealthyAt = member(object, QLatin1String("lastHealthyAt"));
    record.updatedAt = member(object, QLatin1String("updatedAt"));
    record.isPending = object.value(QLatin1String("pendingHealthCheck")).toBool();
    // A check may have been the first to write a new store's record.
    record.isSeed =
        record.updatedAt && !record.previous && !record.lastHealthyAt && !record.isPending;
    return record;
}

QString directoryOf(const QString& version) {
    QString name;
    for (const QChar c : version) {
        name += c == QLatin1Char('/') || c == QLatin1Char(':') ? QLatin1Char('_') : c;
    }
    return name;
}

} // namespace orvanta::simulation
