// SPDX-License-Identifier: MIT
#include "platform/beast/loopback_exchange.h"

#include "platform/posix/socket_calls.h"

#include <QUrl>

#include <array>
#include <cerrno>
#include <sys/socket.h>
#include <system_error>
#include <utility>

namespace orvanta {
namespace {

constexpr qsizetype kMebibyte = 1024 * 1024;
/// What one readiness of a socket may keep the loop busy with.
constexpr int kMostReads = 16;

QString serverOf(const QString& url) {
    const QString authority = url.section(u'/', 2, 2);
    return authority.isEmpty() ? url : authority;
}

QString inSeconds(Seconds limit) {
    return QStringLiteral("%1 s").arg(limit.count());
}

QString textOf(int error) {
    return QString::fromStdString(std::generic_category().message(error));
}

QByteArray requestText(LoopbackRequest::Method method, const QUrl& url) {
    const bool isPost = method == LoopbackRequest::Method::Post;
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

LoopbackExchange::LoopbackExchange(LoopbackRequest request,
                                   std::function<void(LoopbackExchange*)> onEnd)
    : m_request(std::move(request)), m_onEnd(std::move(onEnd)),
      m_parser(m_request.method == LoopbackRequest::Method::Post
                   ? std::nullopt
                   : std::optional(m_request.largestBody)),
      m_limits(m_request.limits, [this](LimitWatch::Passed passed) { failAtLimit(passed); }) {}

void LoopbackExchange::begin() {
    constexpr int kHttpPort = 80;
    const QUrl url(m_request.url, QUrl::StrictMode);
    if (url.isValid() && !url.isEmpty() && url.scheme() != QLatin1String("http")) {
        return failWith(
            unsupportedScheme,
            QStringLiteral("The address \"%1\" is not one of HTTP.").arg(m_request.url));
    }
    const auto host = loopbackAddress(url.host().toLatin1().constData());
    if (!url.isValid() || !host || !url.userInfo().isEmpty()) {
        return failWith(
            badAddress,
            QStringLiteral("The address \"%1\" is not one of this machine.").arg(m_request.url));
    }
    m_unsent = requestText(m_request.method, url);
    connectTo(static_cast<std::uint16_t>(url.port(kHttpPort)), *host);
}

void LoopbackExchange::connectTo(std::uint16_t port, std::uint32_t host) {
    m_socket = beginConnection(host, port);
    if (!m_socket.isOpen()) {
        return failWithoutConnection(errno);
    }
    m_readable.emplace(m_socket.get(), QSocketNotifier::Read);
    QObject::connect(&*m_readable, &QSocketNotifier::activated, &*m_readable,
                     [this] { takeReply(); });
    // On this machine the connection nearly always stands by now.
    sendRequest();
}

void LoopbackExchange::sendRequest() {
    const ssize_t sent =
        sendBytes(m_socket, m_unsent.constData(), static_cast<std::size_t>(m_unsent.size()));
    if (sent < 0 && !isTryAgain(errno) && errno != ENOTCONN) {
        return handleSendFailure(errno);
    }
    if (sent > 0) {
        m_hasSent = true;
        m_limits.noteActivity();
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
    for (int reads = 0; reads < kMostReads && !m_hasEnded; ++reads) {
        const ssize_t count = ::recv(m_socket.get(), buffer.data(), buffer.size(), 0);
        if (count < 0 && isTryAgain(errno)) {
            return;
        }
        if (count < 0) {
            return m_hasSent
                       ? failWith(connectionBroke,
                                  QStringLiteral("The connection to the server at %1 broke: %2.")
                                      .arg(serverOf(m_request.url), textOf(errno)))
                       : failWithoutConnection(errno);
        }
        if (count == 0) {
            return takeEndOfConnection();
        }
        m_hasReceived = true;
        m_limits.noteActivity();
        note(m_parser.read({buffer.data(), static_cast<std::size_t>(count)}));
    }
}

void LoopbackExchange::note(ReplyParser::Progress progress) {
    switch (progress) {
    case ReplyParser::Progress::unfinished:
        return;
    case ReplyParser::Progress::complete:
        return end();
    case ReplyParser::Progress::malformed:
        return failWith(malformedReply,
                        QStringLiteral("The server at %1 sent something that is no HTTP reply.")
                            .arg(serverOf(m_request.url)));
    case ReplyParser::Progress::tooLarge:
        return failWith(
            replyTooLarge,
            QStringLiteral("The reply of the server at %1 is larger than %2 MiB.")
                .arg(serverOf(m_request.url), QString::number(m_request.largestBody / kMebibyte)));
    }
}

void LoopbackExchange::takeEndOfConnection() {
    if (m_parser.finish()) {
        end();
    } else if (m_hasReceived) {
        failWith(cutShort, QStringLiteral("The server at %1 ended its reply too early.")
                               .arg(serverOf(m_request.url)));
    } else {
        failWith(noReply, QStringLiteral("The server at %1 closed the connection without a reply.")
                              .arg(serverOf(m_request.url)));
    }
}

void LoopbackExchange::failWithoutConnection(int error) {
    failWith(noConnection, QStringLiteral("The server at %1 could not be reached: %2.")
                               .arg(serverOf(m_request.url), textOf(error)));
}

void LoopbackExchange::failAtLimit(LimitWatch::Passed passed) {
    const QString sentence =
        passed == LimitWatch::Passed::Idle
            ? QStringLiteral("The server at %1 did not respond for %2.")
                  .arg(serverOf(m_request.url), inSeconds(m_request.limits.idle))
            : QStringLiteral("The server at %1 did not complete its reply within %2.")
                  .arg(serverOf(m_request.url), inSeconds(m_request.limits.whole));
    failWith(timedOut, sentence);
}

void LoopbackExchange::failWith(int code, const QString& sentence) {
    if (!m_hasEnded) {
        m_failure.emplace(QStringLiteral("http"), code, sentence);
        end();
    }
}

/// May be inside a notifier or the timer of the limits, so they only fall silent.
void LoopbackExchange::end() {
    m_hasEnded = true;
    for (auto* notifier : {&m_readable, &m_writable}) {
        if (*notifier) {
            (*notifier)->setEnabled(false);
        }
    }
    m_socket.reset();
    m_onEnd(this);
}

void LoopbackExchange::deliver() {
    if (m_failure) {
        m_completion.fail(*m_failure);
    } else {
        m_completion.succeed({m_parser.status(), m_parser.takeBody()});
    }
}

} // namespace orvanta
