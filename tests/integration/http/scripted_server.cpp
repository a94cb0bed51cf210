// SPDX-License-Identifier: MIT
#include "integration/http/scripted_server.h"

#include <QTimer>

#include <algorithm>
#include <memory>
#include <utility>

namespace orvanta {

ScriptedServer::ScriptedServer(Answer answer, quint16 port) : m_answer(std::move(answer)) {
    m_server.setListenBacklogSize(1000);
    m_server.setMaxPendingConnections(1000);
    if (!m_server.listen(QHostAddress::LocalHost, port)) {
        qFatal("The scripted server cannot listen on port %d.", port);
    }
    QObject::connect(&m_server, &QTcpServer::newConnection, &m_server, [this] { onConnection(); });
}

QString ScriptedServer::url(const QString& path) const {
    return QStringLiteral("http://") + authority() + path;
}

QString ScriptedServer::authority() const {
    return QStringLiteral("127.0.0.1:%1").arg(port());
}

void ScriptedServer::onConnection() {
    while (QTcpSocket* peer = m_server.nextPendingConnection()) {
        QByteArray& received = m_received.emplace_back();
        QObject::connect(peer, &QTcpSocket::readyRead, peer, [this, peer, &received] {
            received += peer->readAll();
            if (received.endsWith("\r\n\r\n")) {
                ++m_requests;
                m_answer(*peer);
            }
        });
        QObject::connect(peer, &QTcpSocket::disconnected, peer, &QObject::deleteLater);
    }
}

ScriptedServer::Answer replyWith(QByteArray bytes) {
    return [bytes = std::move(bytes)](QTcpSocket& peer) { peer.write(bytes); };
}

ScriptedServer::Answer replyAndClose(QByteArray bytes) {
    return [bytes = std::move(bytes)](QTcpSocket& peer) {
        peer.write(bytes);
        peer.disconnectFromHost();
    };
}

ScriptedServer::Answer replyAndDrip(QByteArray head, QByteArray bytes) {
    return [head = std::move(head), bytes = std::move(bytes)](QTcpSocket& peer) {
        peer.setSocketOption(QAbstractSocket::LowDelayOption, 1);
        peer.write(head);
        auto* timer = new QTimer(&peer);
        timer->setTimerType(Qt::PreciseTimer);
        QObject::connect(timer, &QTimer::timeout, &peer, [timer, &peer, rest = bytes]() mutable {
            peer.write(rest.left(1));
            rest.remove(0, 1);
            if (rest.isEmpty()) {
                timer->stop();
            }
        });
        timer->start(50);
    };
}

ScriptedServer::Answer replyAndPour(QByteArray head, qint64 total, qint64& sent) {
    return [head = std::move(head), total, &sent](QTcpSocket& peer) {
        peer.write(head);
        const auto left = std::make_shared<qint64>(total);
        const auto pour = [&peer, left] {
            const qint64 piece = std::min<qint64>(*left, 64 * 1024);
            if (peer.bytesToWrite() < piece) {
                peer.write(QByteArray(piece, '0'));
                *left -= piece;
            }
        };
        QObject::connect(&peer, &QTcpSocket::bytesWritten, &peer, [pour, &sent](qint64 written) {
            sent += written;
            pour();
        });
    };
}

} // namespace orvanta
