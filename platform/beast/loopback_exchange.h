// SPDX-License-Identifier: MIT
#pragma once

#include "platform/beast/reply_parser.h"
#include "platform/http/exchange.h"
#include "platform/posix/file_descriptor.h"

#include <QByteArray>
#include <QSocketNotifier>
#include <QString>

#include <cstdint>
#include <optional>

namespace orvanta {

/// An exchange with a server on this machine, whose address is "http://" and one of 127.0.0.0/8 by
/// number, over a connection of its own, which is never used again: nothing is ever sent twice. The
/// body of the reply to a POST is dropped.
class LoopbackExchange : public Exchange {
public:
    explicit LoopbackExchange(HttpRequest toSend);

private:
    /// Connects and sends as much as goes at once.
    void send() override;
    void stop() override;

    void connectTo(std::uint16_t port, std::uint32_t host);
    void sendRequest();
    void listenForReply();
    void listenForRoom(bool isOn);
    void handleSendFailure(int error);
    void takeReply();
    void takeEndOfConnection();
    void note(ReplyParser::Progress progress);
    void failWith(int code, const QString& sentence);
    void failWithoutConnection(int error);

    ReplyParser m_parser;
    QByteArray m_unsent;
    FileDescriptor m_socket; ///< closed with the exchange, as it takes longer than the rest
    std::optional<QSocketNotifier> m_readable; ///< both after the socket, so that they go first
    std::optional<QSocketNotifier> m_writable;
    bool m_hasSent = false;
    bool m_hasReceived = false;
};

} // namespace orvanta
