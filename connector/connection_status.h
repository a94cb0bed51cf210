// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <optional>

namespace orvanta {

/// What the icon and the status line say about the connector.
enum class ConnectorMenuState { offline, notPaired, online };

/// "offline", "notPaired" or "online".
QString rawValue(ConnectorMenuState state);

/// Nothing unless `text` is exactly one of the three raw values.
std::optional<ConnectorMenuState> menuStateFromRawValue(const QString& text);

/// The status line shown for `state`: "Offline", "Not Paired" or "Online".
QString statusText(ConnectorMenuState state);

/// Where the connector says that it listens.
struct LocalServerStatus {
    std::optional<QString> host;
    std::optional<std::int64_t> port;
    std::optional<QString> baseUrl;
    std::optional<std::int64_t> requestedPort;

    bool operator==(const LocalServerStatus&) const = default;
};

/// The connector's tunnel to the outside.
struct CloudflaredConnectionStatus {
    std::optional<bool> running;
    std::optional<bool> healthy;
    std::optional<std::int64_t> restartCount;

    bool operator==(const CloudflaredConnectionStatus&) const = default;
};

/// The connector's answer to a status request. Every member may be missing.
struct TrayConnectionStatus {
    std::optional<QString> mode;
    std::optional<QString> accessMode;
    std::optional<QString> state;
    std::optional<QString> workspaceId;
    std::optional<QString> hostname;
    std::optional<QString> webAppUrl;
    std::optional<LocalServerStatus> localServer;
    std::optional<CloudflaredConnectionStatus> cloudflared;

    /// Throws `JsonError` when `document` is no JSON object or any known member, needed or not,
    /// has the wrong type.
    static TrayConnectionStatus decode(const QByteArray& document);

    bool operator==(const TrayConnectionStatus&) const = default;
};

/// The menu state that follows from `status`; without one the connector is offline.
ConnectorMenuState evaluate(const std::optional<TrayConnectionStatus>& status);

} // namespace orvanta
