// SPDX-License-Identifier: MIT
#include "platform/beast/loopback_exchange.h"

#include "platform/http/http_failure.h"
#include "platform/posix/socket_calls.h"

#include <QUrl>

#include <array>
#include <cerrno>
#include <sys/socket.h>
#include <system_error>
#include <utility>

namespace orvanta {
namespace {

using http_failure::serverOf;

/// What one readiness of a socket may keep the loop busy with.
constexpr int kMostReads = 16;

QString textOf(int error) {
    return QString::fromStdString(std::generic_category().message(error));
}

QByteArray requestText(HttpMethod method, const QUrl& url) {
    const bool isPost = method == HttpMethod::Post;
    QByteArray target = url.path(QUrl::FullyEncoded).toLatin1();
    if (target.isEmpty()) {
        target = "/";
    }
    if (url.hasQuery()) {
        target += '?' + url.query(QUrl::FullyEncoded).toLatin1();
    }
    return (isPost ? "POST " : "GET ") + target +
           " HTTP/1.1\r\nHost: " + url.authority(QUrl::FullyEncoded).toLatin1() +
           "\r\nAccept: */*\r\n" + (isPost ? "Content-Length: 0\r\n\r\n" : "\r\n");
}

} // namespace

LoopbackExchange::LoopbackExchange(HttpRequest toSend)
    : Exchange(std::move(toSend)),
      m_parser(request().method == HttpMethod::Post ? std::nullopt
                                                    : std::optional(request().largestBody)) {}

void LoopbackExchange::send() {
    constexpr int kHttpPort = 80;
    const QUrl url(request().url, QUrl::StrictMode);
    if (url.isValid() && !url.isEmpty() && url.scheme() != QLatin1String("http")) {
        return failWith(
            http_failure::kUnsupportedProtocol,
            QStringLiteral("The address \"%1\" is not one of HTTP.").arg(request().url));
    }
    const auto host = loopbackAddress(url.host().toLatin1().constData());
    if (!url.isValid() || !host || !url.userInfo().isEmpty()) {
        return failWith(
            http_failure::kBadAddress,
            QStringLiteral("The address \"%1\" is not one of this machine.").arg(request().url));
    }
    m_unsent = requestText(request().method, url);
    connectTo(static_cast<std::uint16_t>(url.port(kHttpPort)), *host);
}

void LoopbackExchange::connectTo(std::uint16_t port, std::uint32_t host) {
    m_socket = beginConnection(host, port);
    if (!m_socket.isOpen()) {
        return failWithoutConnection(errno);
    }
    // On this machine the connection nearly always stands by now.
    sendRequest();
    // While the server is at work.
    if (!hasEnded()) {
        listenForReply();
    }
}

void LoopbackExchange::listenForReply() {
    m_readable.emplace(m_socket.get(), QSocketNotifier::Read);
    QObject::connect(&*m_readable, &QSocketNotifier::activated, &*m_readable,
                     [this] { takeReply(); });
}

void LoopbackExchange::sendRequest() {
    const ssize_t sent =
        sendBytes(m_socket, m_unsent.constData(), static_cast<std::size_t>(m_unsent.size()));
    if (sent < 0 && !isTryAgain(errno) && errno != ENOTCONN) {
        return handleSendFailure(errno);
    }
    if (sent > 0) {
        m_hasSent = true;
        noteActivity();
        m_unsent.remove(0, sent);
    }
    listenForRoom(!m_unsent.isEmpty());
}

/// The notifier may be the one that is speaking, so it only falls silent.
void LoopbackExchange::listenForRoom(bool isOn) {
    if (isOn && !m_writable) {
        m_writable.emplace(m_socket.get(), QSocketNotifier::Write);
        QObject::connect(&*m_writable, &QSocketNotifier::activated, &*m_writable,
                         [this] { sendRequest(); });
    } else if (m_writable) {
        m_writable->setEnabled(isOn);
    }
}

/// What has come before a connection broke says more than that it broke.
void LoopbackExchange::handleSendFailure(int error) {
    if (m_hasSent) {
        listenForRoom(false);
    } else {
        failWithoutConnection(error);
    }
}

void LoopbackExchange::takeReply() {
    std::array<char, 16 * 1024> buffer;
    for (int reads = 0; reads < kMostReads && !hasEnded(); ++reads) {
        const ssize_t count = ::recv(m_socket.get(), buffer.data(), buffer.size(), 0);
        if (count < 0 && isTryAgain(errno)) {
            return;
        }
        if (count < 0) {
            return m_hasSent
                       ? failWith(http_failure::kConnectionBroke,
                                  QStringLiteral("The connection to the server at %1 broke: %2.")
                                      .arg(serverOf(request().url), textOf(errno)))
                       : failWithoutConnection(errno);
        }
        if (count == 0) {
            return takeEndOfConnection();
        }
        m_hasReceived = true;
        noteActivity();
        note(m_parser.read({buffer.data(), static_cast<std::size_t>(count)}));
    }
}

void LoopbackExchange::note(ReplyParser::Progress progress) {
    switch (progress) {
    case ReplyParser::Progress::unfinished:
        return;
    case ReplyParser::Progress::complete:
        return succeed({m_parser.status(), m_parser.takeBody()});
    case ReplyParser::Progress::malformed:
        return failWith(http_failure::kMalformedReply,
                        QStringLiteral("The server at %1 sent something that is no HTTP reply.")
                            .arg(serverOf(request().url)));
    case ReplyParser::Progress::tooLarge:
        return fail(http_failure::bodyTooLarge(request().largestBody, request().url));
    }
}

void LoopbackExchange::takeEndOfConnection() {
    if (m_parser.finish()) {
        succeed({m_parser.status(), m_parser.takeBody()});
    } else if (m_hasReceived) {
        failWith(http_failure::kCutShort,
                 QStringLiteral("The server at %1 ended its reply too early.")
                     .arg(serverOf(request().url)));
    } else {
        failWith(http_failure::kNoReply,
                 QStringLiteral("The server at %1 closed the connection without a reply.")
                     .arg(serverOf(request().url)));
    }
}

void LoopbackExchange::failWithoutConnection(int error) {
    failWith(http_failure::kNotReached, QStringLiteral("The server at %1 could not be reached: %2.")
                                            .arg(serverOf(request().url), textOf(error)));
}

void LoopbackExchange::failWith(int code, const QString& sentence) {
    fail(http_failure::failure(code, sentence));
}

void LoopbackExchange::stop() {
    for (auto* notifier : {&m_readable, &m_writable}) {
        if (*notifier) {
            (*notifier)->setEnabled(false);
        }
    }
}

} // namespace orvanta
