// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/session_bus_probe.h"
#include "platform/tray_host.h"

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QTimer>

#include <optional>

namespace orvanta {

/// Hosts of StatusNotifierItems on the session bus. Looks for them without the toolkit's tray
/// icon, which must not be touched before there is one. When the bus goes away, tries again until
/// it is back; so with a bus or a watcher that does not answer. Needs a QCoreApplication.
class StatusNotifierHost : public QObject, public TrayHost {
    Q_OBJECT
public:
    StatusNotifierHost();
    ~StatusNotifierHost() override;

    void watch(std::function<void(Event)> observer) override;
    QString hint() const override;
    QString menuText(const QString& text) const override;
    bool opensMenuOnClick() const override { return false; }

private Q_SLOTS:
    void handleDisconnected();
    void lookForHost();

private:
    void askTheBus();
    void connectToBus();
    void listen(QDBusConnection& bus);
    void stopListening(QDBusConnection bus);
    void askAgainAfter(const QDBusError& error);
    void handleHostFound();
    void disconnectFromBus();

    std::function<void(Event)> m_observer;
    bool m_hasAppeared = false;
    int m_connectionNumber = 0;
    QTimer m_retryTimer;
    std::optional<SessionBusProbe> m_probe;
    std::optional<QDBusServiceWatcher> m_watcher; ///< set while there is a bus
};

} // namespace orvanta
