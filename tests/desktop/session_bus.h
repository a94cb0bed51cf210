// SPDX-License-Identifier: MIT
#pragma once

#include <QDBusArgument>
#include <QDBusConnection>
#include <QString>
#include <QVariantList>

#include <optional>

namespace orvanta::tests {

/// A connection of the test's own to a session bus. Every call is over after two seconds at most.
class SessionBus {
public:
    explicit SessionBus(const QString& address);
    ~SessionBus();
    SessionBus(const SessionBus&) = delete;
    SessionBus& operator=(const SessionBus&) = delete;

    struct Object {
        QString service;
        QString path;
        QString interface;
    };

    bool isConnected() const { return m_connection.isConnected(); }
    /// The reply's values; nothing for an error or no reply.
    std::optional<QVariantList> call(const Object& object, const QString& method,
                                     const QVariantList& arguments = {}) const;
    /// Invalid when it cannot be had.
    QVariant property(const Object& object, const QString& name) const;
    /// The process behind a name on the bus; 0 without one.
    pid_t ownerProcess(const QString& service) const;
    /// Sends a signal that nobody listens to.
    bool signal(const QString& name) const;

private:
    QString m_name;
    QDBusConnection m_connection;
};

} // namespace orvanta::tests
