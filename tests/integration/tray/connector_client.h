// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>

#include <optional>

namespace orvanta::tests {

struct Reply {
    long status = 0;
    QByteArray body;
};

/// A blocking request to this machine; nothing when there was no complete reply within
/// `limitMs`.
std::optional<Reply> request(const QByteArray& method, const QString& url,
                             const QByteArray& body = {}, int limitMs = 3000);

/// The switch board of a demo connector.
class ConnectorClient {
public:
    explicit ConnectorClient(int port) : m_port(port) {}

    /// A POST to `path`; true for a 2xx reply.
    bool post(const QString& path, const QByteArray& body = {}, int limitMs = 3000) const;
    /// The JSON document at `path`; empty when there is none.
    QJsonObject get(const QString& path) const;
    bool answers() const { return !get(QStringLiteral("/demo/environment")).isEmpty(); }
    int pid() const {
        return get(QStringLiteral("/demo/environment")).value(QStringLiteral("pid")).toInt();
    }
    QString url(const QString& path) const;

private:
    int m_port;
};

} // namespace orvanta::tests
