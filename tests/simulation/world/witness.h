// SPDX-License-Identifier: MIT
#pragma once

#include "connector/connection_status.h"

#include <QString>

#include <cstdint>
#include <optional>
#include <string>

namespace orvanta::simulation {

class Connector;

/// What a request of the tray is for.
enum class Purpose { status, health, pairing, signingOut, restart, manifest, archive };

/// What a status reply means, as whoever made it up knows.
struct StatusMeaning {
    ConnectorMenuState state = ConnectorMenuState::offline;
    std::optional<QString> workspace;
    std::int64_t port = 0; ///< the port it names; nothing if 0 or below
};

/// What a manifest offers, as whoever made it up knows.
struct Offer {
    QString version;
    QString minimum; ///< empty for none
};

/// The end of one exchange.
struct ReplySeen {
    Purpose purpose = Purpose::status;
    int status = 0; ///< 0: it failed
    /// For a usable status document.
    std::optional<StatusMeaning> meaning;
    /// For a manifest that fits.
    std::optional<Offer> offer;
    /// Counts the requests.
    std::int64_t number = 0;
    /// What `Witness::requestSent` gave when it began.
    std::int64_t ticket = 0;
};

/// Sees all that passes between the tray and the world, in order.
class Witness {
public:
    virtual ~Witness() = default;

    virtual void launched(const Connector& connector) = 0;
    virtual void launchRefused(const QString& executable) = 0;
    virtual void terminated(const Connector& connector) = 0;
    /// Just before the tray learns of it, and right after.
    virtual void exitReported(const Connector& connector, int status) = 0;
    virtual void exitHandled(const Connector& connector, int status) = 0;
    /// Just before the tray reads a line that announces `port`.
    virtual void portAnnounced(std::int64_t port) = 0;

    virtual std::int64_t requestSent(Purpose purpose, std::int64_t number) = 0;
    virtual void replied(const ReplySeen& reply) = 0;
    virtual void replyHandled(const ReplySeen& reply) = 0;

    /// Someone sent `request` to the listener for restarts; `reply` is what came back.
    virtual void hostAsked(const QByteArray& request, const QByteArray& reply) = 0;

    /// For the record of a run.
    virtual void note(const std::string& what) = 0;
};

} // namespace orvanta::simulation
