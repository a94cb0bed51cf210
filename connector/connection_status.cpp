// SPDX-License-Identifier: MIT
#include "connector/connection_status.h"

#include "base/json.h"

namespace orvanta {
namespace {

LocalServerStatus decodeLocalServer(const JsonReader& json) {
    return {.host = json.string("host"),
            .port = json.integer("port"),
            .baseUrl = json.string("baseUrl"),
            .requestedPort = json.integer("requestedPort")};
}

CloudflaredConnectionStatus decodeCloudflared(const JsonReader& json) {
    return {.running = json.boolean("running"),
            .healthy = json.boolean("healthy"),
            .restartCount = json.integer("restartCount")};
}

bool isText(const std::optional<QString>& value, const QString& expected) {
    return value && value->compare(expected, Qt::CaseInsensitive) == 0;
}

bool isMissingOrEmpty(const std::optional<QString>& value) {
    return !value || value->isEmpty();
}

bool requiresRemoteAccess(const TrayConnectionStatus& status) {
    return isText(status.accessMode, QStringLiteral("cloudflare-only")) ||
           isText(status.mode, QStringLiteral("production"));
}

bool isTunnelUp(const std::optional<CloudflaredConnectionStatus>& tunnel) {
    return tunnel && tunnel->running.value_or(false) && tunnel->healthy.value_or(false);
}

ConnectorMenuState evaluateRunning(const TrayConnectionStatus& status) {
    if (!requiresRemoteAccess(status)) {
        return ConnectorMenuState::online;
    }
    if (isMissingOrEmpty(status.workspaceId) || isMissingOrEmpty(status.hostname)) {
        return ConnectorMenuState::notPaired;
    }
    return isTunnelUp(status.cloudflared) ? ConnectorMenuState::online
                                          : ConnectorMenuState::offline;
}

} // namespace

QString rawValue(ConnectorMenuState state) {
    switch (state) {
    case ConnectorMenuState::online:
        return QStringLiteral("online");
    case ConnectorMenuState::notPaired:
        return QStringLiteral("notPaired");
    case ConnectorMenuState::offline:
        break;
    }
    return QStringLiteral("offline");
}

std::optional<ConnectorMenuState> menuStateFromRawValue(const QString& text) {
    for (const auto state :
         {ConnectorMenuState::offline, ConnectorMenuState::notPaired, ConnectorMenuState::online}) {
        if (text == rawValue(state)) {
            return state;
        }
    }
    return std::nullopt;
}

QString statusText(ConnectorMenuState state) {
    switch (state) {
    case ConnectorMenuState::online:
        return QStringLiteral("Online");
    case ConnectorMenuState::notPaired:
        return QStringLiteral("Not Paired");
    case ConnectorMenuState::offline:
        break;
    }
    return QStringLiteral("Offline");
}

TrayConnectionStatus TrayConnectionStatus::decode(const QByteArray& document) {
    const auto json = JsonReader::parse(document);
    TrayConnectionStatus status{.mode = json.string("mode"),
                                .accessMode = json.string("accessMode"),
                                .state = json.string("state"),
                                .workspaceId = json.string("workspaceId"),
                                .hostname = json.string("hostname"),
                                .webAppUrl = json.string("webAppUrl"),
                                .localServer = {},
                                .cloudflared = {}};
    if (const auto localServer = json.object("localServer")) {
        status.localServer = decodeLocalServer(*localServer);
    }
    if (const auto cloudflared = json.object("cloudflared")) {
        status.cloudflared = decodeCloudflared(*cloudflared);
    }
    return status;
}

ConnectorMenuState evaluate(const std::optional<TrayConnectionStatus>& status) {
    if (!status) {
        return ConnectorMenuState::offline;
    }
    if (isText(status->state, QStringLiteral("NEEDS_PAIRING")) ||
        isText(status->state, QStringLiteral("NEEDS_LOGIN"))) {
        return ConnectorMenuState::notPaired;
    }
    return isText(status->state, QStringLiteral("RUNNING")) ? evaluateRunning(*status)
                                                            : ConnectorMenuState::offline;
}

} // namespace orvanta
