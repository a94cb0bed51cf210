// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace orvanta {

/// The state of the runtime store, `runtime/current.json`. Timestamps are texts such as
/// "2026-11-15T21:37:51Z" and are never parsed.
struct MacRuntimeCurrentState {
    QString currentVersion;
    /// Where a rollback goes.
    std::optional<QString> previousVersion;
    std::optional<QString> lastHealthyVersion;
    QString channel;
    std::optional<QString> lastCheckedAt;
    /// The newer version that the last manifest offered.
    std::optional<QString> availableVersion;
    /// When `currentVersion` last changed.
    std::optional<QString> updatedAt;
    std::optional<QString> lastHealthyAt;
    /// True while a newly installed version awaits its first confirmation.
    std::optional<bool> pendingHealthCheck;

    /// Throws `JsonError` for a missing required member or one of the wrong type.
    static MacRuntimeCurrentState decode(const QByteArray& bytes);
    QByteArray encode() const;

    bool operator==(const MacRuntimeCurrentState&) const = default;
};

/// What one runtime says about itself, `runtime.json`.
struct MacRuntimeMetadata {
    QString version;
    QString platform;
    QString arch;
    std::optional<QString> builtAt;
    std::optional<QString> nodeVersion;
    std::optional<QString> cloudflaredVersion;

    /// Throws `JsonError` for a missing required member or one of the wrong type.
    static MacRuntimeMetadata decode(const QByteArray& bytes);
    QByteArray encode() const;

    bool operator==(const MacRuntimeMetadata&) const = default;
};

} // namespace orvanta
