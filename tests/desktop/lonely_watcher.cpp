// SPDX-License-Identifier: MIT
#include "desktop/lonely_watcher.h"

#include <QDBusMessage>
#include <QDBusVariant>

namespace orvanta::tests {
namespace {

const QString kConnection = QStringLiteral("lonely-watcher");
const QString kWatcher = QStringLiteral("org.kde.StatusNotifierWatcher");

} // namespace

LonelyWatcher::LonelyWatcher(const QString& busAddress)
    : m_bus(QDBusConnection::connectToBus(busAddress, kConnection)) {
    m_bus.registerVirtualObject(QStringLiteral("/StatusNotifierWatcher"), this);
    m_isTheWatcher = m_bus.registerService(kWatcher);
}

LonelyWatcher::~LonelyWatcher() {
    QDBusConnection::disconnectFromBus(kConnection);
}

QString LonelyWatcher::introspect(const QString&) const {
    return {};
}

bool LonelyWatcher::handleMessage(const QDBusMessage& message, const QDBusConnection& bus) {
    if (message.member() == QLatin1String("RegisterStatusNotifierItem")) {
        ++m_items;
        return bus.send(message.createReply());
    }
    if (message.member() == QLatin1String("Get")) {
        ++m_questions;
        return bus.send(message.createReply(QVariant::fromValue(QDBusVariant(false))));
    }
    return false;
}

} // namespace orvanta::tests
