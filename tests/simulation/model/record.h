// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace orvanta::simulation {

/// The store's record as somebody else would read it.
struct Record {
    QString current;
    std::optional<QString> previous;
    std::optional<QString> lastHealthy;
    std::optional<QString> lastHealthyAt;
    std::optional<QString> updatedAt;
    bool isPending = false;
    /// Nothing but what a new store has, checked or not.
    bool isSeed = false;

    bool operator==(const Record&) const = default;
};

/// Nothing when the bytes are no record.
std::optional<Record> recordFrom(const QByteArray& bytes);

/// The name of a version's directory.
QString directoryOf(const QString& version);

} // namespace orvanta::simulation
