// SPDX-License-Identifier: MIT
#pragma once

#include "base/completion.h"
#include "platform/http_session.h"
#include "simulation/world/connectors.h"
#include "simulation/world/witness.h"

#include <memory>
#include <optional>

namespace orvanta::simulation {

/// One request on its way.
struct Exchange {
    QString url;
    HttpLimits limits;
    qsizetype largestBody = 0;
    ReplySeen seen;
    Completion<HttpOutcome> completion;
};

/// What a server does with a request: replies after a while, cuts the connection (no reply), or
/// never says a word (no delay).
struct ServerAction {
    std::optional<Moment> delay;
    std::optional<HttpReply> reply;
    std::optional<StatusMeaning> meaning = std::nullopt;
    std::optional<Offer> offer = std::nullopt;
};

/// The way to the connectors and to the channel.
class Network : public HttpSessionFactory {
public:
    Network(WorldQueue& queue, const Conditions& conditions, Connectors& connectors)
        : m_queue(queue), m_conditions(conditions), m_connectors(connectors) {}

    std::shared_ptr<HttpSession> makeLoopbackSession(HttpLimits limits) override;
    std::shared_ptr<HttpSession> sharedSession() override;

    Witness* witness = nullptr;

private:
    class Session;
    Task<HttpOutcome> send(std::shared_ptr<Exchange> exchange, bool isShared);
    void sendToConnector(const std::shared_ptr<Exchange>& exchange);
    void sendToChannel(const std::shared_ptr<Exchange>& exchange);
    /// `server` is the connector that must live until then; none for the channel.
    void schedule(const std::shared_ptr<Exchange>& exchange, ServerAction action,
                  const std::weak_ptr<Connector>& server, bool hasServer);
    /// `isCut`: without the reply.
    void finish(Exchange& exchange, const ServerAction& action, bool isCut) const;

    WorldQueue& m_queue;
    const Conditions& m_conditions;
    Connectors& m_connectors;
    std::shared_ptr<HttpSession> m_shared;
    std::int64_t m_sent = 0;
};

/// What a connector does with a request of that purpose; `queue` is for what follows from it.
ServerAction answerOf(Connector& connector, Purpose purpose, WorldQueue& queue);

/// The same of the web server of the channel.
ServerAction answerOfChannel(const QString& url, const Conditions& conditions);

} // namespace orvanta::simulation
