// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>
#include <QTcpServer>
#include <QTcpSocket>

#include <deque>
#include <functional>

namespace orvanta {

/// A server on 127.0.0.1 whose every word is scripted. Lives in the test's own event loop.
/// Destroying it closes its connections.
class ScriptedServer {
public:
    /// Called at the end of each request's head; may write to the peer, close it, or do nothing.
    using Answer = std::function<void(QTcpSocket& peer)>;

    /// Listens on `port`, or on one that the system picks.
    explicit ScriptedServer(Answer answer, quint16 port = 0);

    quint16 port() const { return m_server.serverPort(); }
    QString url(const QString& path = QStringLiteral("/api")) const;
    /// "127.0.0.1:3000"
    QString authority() const;

    /// Lets further connections wait in the system's queue.
    void stopAccepting() { m_server.pauseAccepting(); }

    int connections() const { return static_cast<int>(m_received.size()); }
    int requests() const { return m_requests; }
    /// All bytes that came on the connection of that number, counted from 0.
    QByteArray received(int connection) const { return m_received.at(connection); }

private:
    void onConnection();

    Answer m_answer;
    QTcpServer m_server;
    std::deque<QByteArray> m_received; ///< a deque, so that references stay
    int m_requests = 0;
};

/// Writes `bytes` and keeps the connection open.
ScriptedServer::Answer replyWith(QByteArray bytes);
/// Writes `bytes`, then closes the connection.
ScriptedServer::Answer replyAndClose(QByteArray bytes);
/// Writes `head`, then `bytes` one by one, one every 50 ms.
ScriptedServer::Answer replyAndDrip(QByteArray head, QByteArray bytes);
/// Writes `head`, then zeros as fast as they are read, `total` at most; counts in `sent` what the
/// system has taken.
ScriptedServer::Answer replyAndPour(QByteArray head, qint64 total, qint64& sent);

} // namespace orvanta
