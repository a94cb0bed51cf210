// SPDX-License-Identifier: MIT
#include "simulation/world/connector.h"

namespace orvanta::simulation {

namespace {

/// What a connector says, and what follows from it by the rules for people: it runs or not, it is
/// paired or not, and in production it needs its tunnel.
struct Document {
    const char* members;
    ConnectorMenuState state;
    const char* workspace;
};

Document documentOf(StatusReply kind) {
    using State = ConnectorMenuState;
    switch (kind) {
    case StatusReply::needsPairing:
        return {R"("state":"NEEDS_PAIRING")", State::notPaired, nullptr};
    case StatusReply::needsLogin:
        return {R"("state":"needs_login","workspaceId":"w1")", State::notPaired, "w1"};
    case StatusReply::productionOnline:
        return {R"("state":"RUNNING","mode":"production","workspaceId":"w 2","hostname":"h",)"
                R"("cloudflared":{"running":true,"healthy":true,"restartCount":3})",
                State::online, "w 2"};
    case StatusReply::productionTunnelDown:
        return {R"("state":"RUNNING","mode":"Production","workspaceId":"w1","hostname":"h",)"
                R"("cloudflared":{"running":true,"healthy":false})",
                State::offline, "w1"};
    case StatusReply::productionUnpaired:
        return {R"("state":"RUNNING","accessMode":"cloudflare-only","workspaceId":"")",
                State::notPaired, ""};
    case StatusReply::starting:
        return {R"("state":"STARTING")", State::offline, nullptr};
    case StatusReply::emptyObject:
        return {"", State::offline, nullptr};
    default:
        return {R"("state":"running","webAppUrl":"https://web.example","workspaceId":"w1")",
                State::online, "w1"};
    }
}

std::int64_t namedPort(const Connector& connector) {
    switch (connector.habits().as<DocumentPort>(Condition::documentPort)) {
    case DocumentPort::own:
        return connector.port();
    case DocumentPort::wrong:
        return 50'002;
    case DocumentPort::none:
    case DocumentPort::zero:
        return 0;
    }
    return 0;
}

} // namespace

QByteArray Connector::document() const {
    const auto kind = m_habits.as<StatusReply>(Condition::status);
    if (kind == StatusReply::notJson) {
        return "<html>";
    }
    if (kind == StatusReply::wrongType) {
        return R"({"state":"RUNNING","localServer":{"port":"3001"}})";
    }
    const QByteArray members = documentOf(kind).members;
    if (members.isEmpty()) {
        return "{}";
    }
    if (m_habits.as<DocumentPort>(Condition::documentPort) == DocumentPort::none) {
        return '{' + members + '}';
    }
    const QByteArray port = QByteArray::number(qlonglong(namedPort(*this)));
    return '{' + members + R"(,"localServer":{"host":"127.0.0.1","port":)" + port + "}}";
}

StatusMeaning Connector::meaning() const {
    const auto kind = m_habits.as<StatusReply>(Condition::status);
    const Document document = documentOf(kind);
    return {.state = document.state,
            .workspace = document.workspace != nullptr
                             ? std::optional(QString::fromLatin1(document.workspace))
                             : std::nullopt,
            .port = kind == StatusReply::emptyObject ? 0 : namedPort(*this)};
}

} // namespace orvanta::simulation
