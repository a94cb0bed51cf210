// SPDX-License-Identifier: MIT
#pragma once

#include "base/completion.h"
#include "base/platform_error.h"
#include "platform/beast/reply_parser.h"
#include "platform/http_session.h"
#include "platform/posix/file_descriptor.h"
#include "platform/posix/limit_watch.h"

#include <QByteArray>
#include <QSocketNotifier>
#include <QString>

#include <cstdint>
#include <functional>
#include <optional>

namespace orvanta {

/// One request to a server on this machine.
struct LoopbackRequest {
    enum class Method { Get, Post };

    Method method;
    QString url; ///< "http://" and an address of 127.0.0.0/8 by number
    HttpLimits limits;
    qsizetype largestBody; ///< in bytes; a POST drops the body instead
};

/// Codes of `PlatformError`s of the domain "http": curl's numbers, so that failures read alike
/// whichever session reports them.
enum HttpFailure {
    unsupportedScheme = 1,
    badAddress = 3,
    noConnection = 7,
    cutShort = 18,
    timedOut = 28,
    noReply = 52,
    connectionBroke = 56,
    malformedReply = 8,
    replyTooLarge = 63,
};

/// One request and its reply over a connection of its own, which is never used again: nothing is
/// ever sent twice. Main thread, with a Qt event loop. Destroying it undelivered abandons the
/// caller.
class LoopbackExchange {
public:
    /// The limits count from here. When one of them or the exchange ends it, `onEnd` is called,
    /// exactly once, with this object; it may not destroy it.
    LoopbackExchange(LoopbackRequest request, std::function<void(LoopbackExchange*)> onEnd);
    LoopbackExchange(const LoopbackExchange&) = delete;
    LoopbackExchange& operator=(const LoopbackExchange&) = delete;

    Completion<HttpReply>::Waiter wait() const { return m_completion.wait(); }

    /// Connects and sends as much as goes at once. The end may come inside this call.
    void begin();

    /// After the end: resumes the caller with the reply or the failure, inside this call.
    void deliver();

private:
    void connectTo(std::uint16_t port, std::uint32_t host);
    void sendRequest();
    void listenForRoom(bool isOn);
    void handleSendFailure(int error);
    void takeReply();
    void takeEndOfConnection();
    void note(ReplyParser::Progress progress);
    void failWith(int code, const QString& sentence);
    void failWithoutConnection(int error);
    void failAtLimit(LimitWatch::Passed passed);
    void end();

    const LoopbackRequest m_request;
    const std::function<void(LoopbackExchange*)> m_onEnd;
    ReplyParser m_parser;
    QByteArray m_unsent;
    FileDescriptor m_socket;
    std::optional<QSocketNotifier> m_readable; ///< both after the socket, so that they go first
    std::optional<QSocketNotifier> m_writable;
    LimitWatch m_limits;
    bool m_hasSent = false;
    bool m_hasReceived = false;
    bool m_hasEnded = false;
    std::optional<PlatformError> m_failure;
    Completion<HttpReply> m_completion;
};

} // namespace orvanta
