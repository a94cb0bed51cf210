// SPDX-License-Identifier: MIT
#include "desktop/session_bus.h"

#include <QDBusMessage>
#include <QDBusVariant>

namespace orvanta::tests {
namespace {

constexpr int kCallLimitMs = 2'000;

QString nextName() {
    static int count = 0;
    return QStringLiteral("test-%1").arg(++count);
}

} // namespace

SessionBus::SessionBus(const QString& address)
    : m_name(nextName()), m_connection(QDBusConnection::connectToBus(address, m_name)) {}

SessionBus::~SessionBus() {
    QDBusConnection::disconnectFromBus(m_name);
}

std::optional<QVariantList> SessionBus::call(const Object& object, const QString& method,
                                             const QVariantList& arguments) const {
    QDBusMessage message =
        QDBusMessage::createMethodCall(object.service, object.path, object.interface, method);
    message.setArguments(arguments);
    message.setAutoStartService(false);
    const QDBusMessage reply = m_connection.call(message, QDBus::Block, kCallLimitMs);
    if (reply.type() != QDBusMessage::ReplyMessage) {
        return std::nullopt;
    }
    return reply.arguments();
}

QVariant SessionBus::property(const Object& object, const QString& name) const {
    const auto reply =
        call({object.service, object.path, QStringLiteral("org.freedesktop.DBus.Properties")},
             QStringLiteral("Get"), {object.interface, name});
    return reply && !reply->isEmpty() ? reply->first().value<QDBusVariant>().variant() : QVariant();
}

pid_t SessionBus::ownerProcess(const QString& service) const {
    const auto reply =
        call({QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
              QStringLiteral("org.freedesktop.DBus")},
             QStringLiteral("GetConnectionUnixProcessID"), {service});
    return reply && !reply->isEmpty() ? static_cast<pid_t>(reply->first().toUInt()) : 0;
}

bool SessionBus::signal(const QString& name) const {
    return m_connection.send(QDBusMessage::createSignal(QStringLiteral("/test"),
                                                        QStringLiteral("com.orvanta.test"), name));
}

} // namespace orvanta::tests
