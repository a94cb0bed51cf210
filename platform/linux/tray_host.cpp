// SPDX-License-Identifier: MIT
#include "platform/linux/tray_host.h"

#include "platform/posix/desktop_services.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>

#include <chrono>

namespace orvanta {
namespace {

using namespace std::chrono_literals;

constexpr auto kRetryInterval = 2s;
constexpr int kAnswerLimitMs = 5'000;

const QString kWatcherService = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString kWatcherPath = QStringLiteral("/StatusNotifierWatcher");

/// Of our own: the toolkit's shared connection stays dead once its bus has gone.
QString connectionName(int number) {
    return QStringLiteral("orvanta-tray-host-%1").arg(number);
}

} // namespace

StatusNotifierHost::StatusNotifierHost() {
    m_retryTimer.setInterval(kRetryInterval);
    m_retryTimer.setSingleShot(true);
    connect(&m_retryTimer, &QTimer::timeout, this, [this] {
        if (m_watcher) {
            lookForHost();
        } else {
            askTheBus();
        }
    });
}

StatusNotifierHost::~StatusNotifierHost() {
    disconnectFromBus();
}

void StatusNotifierHost::watch(std::function<void(Event)> observer) {
    m_observer = std::move(observer);
    QMetaObject::invokeMethod(
        this, [this] { askTheBus(); }, Qt::QueuedConnection);
}

void StatusNotifierHost::askTheBus() {
    m_probe.emplace([this](bool isAlive) {
        if (isAlive) {
            connectToBus();
        } else {
            m_retryTimer.start();
        }
    });
}

void StatusNotifierHost::connectToBus() {
    auto bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus,
                                             connectionName(++m_connectionNumber));
    if (bus.isConnected()) {
        listen(bus);
        lookForHost();
    } else {
        disconnectFromBus();
        m_retryTimer.start();
    }
}

void StatusNotifierHost::listen(QDBusConnection& bus) {
    bus.connect(QString(), QStringLiteral("/org/freedesktop/DBus/Local"),
                QStringLiteral("org.freedesktop.DBus.Local"), QStringLiteral("Disconnected"), this,
                SLOT(handleDisconnected()));
    bus.connect(kWatcherService, kWatcherPath, kWatcherService,
                QStringLiteral("StatusNotifierHostRegistered"), this, SLOT(lookForHost()));
    m_watcher.emplace(kWatcherService, bus, QDBusServiceWatcher::WatchForRegistration);
    connect(&*m_watcher, &QDBusServiceWatcher::serviceRegistered, this, [this] { lookForHost(); });
}

/// What is still listened to when a connection goes, its own thread lets go of, at a time when this
/// object may be gone.
void StatusNotifierHost::stopListening(QDBusConnection bus) {
    bus.disconnect(QString(), QStringLiteral("/org/freedesktop/DBus/Local"),
                   QStringLiteral("org.freedesktop.DBus.Local"), QStringLiteral("Disconnected"),
                   this, SLOT(handleDisconnected()));
    bus.disconnect(kWatcherService, kWatcherPath, kWatcherService,
                   QStringLiteral("StatusNotifierHostRegistered"), this, SLOT(lookForHost()));
}

void StatusNotifierHost::lookForHost() {
    if (m_hasAppeared || !m_watcher) {
        return;
    }
    auto get = QDBusMessage::createMethodCall(kWatcherService, kWatcherPath,
                                              QStringLiteral("org.freedesktop.DBus.Properties"),
                                              QStringLiteral("Get"));
    get.setArguments({kWatcherService, QStringLiteral("IsStatusNotifierHostRegistered")});
    get.setAutoStartService(false);
    auto* call = new QDBusPendingCallWatcher(m_watcher->connection().asyncCall(get, kAnswerLimitMs),
                                             &*m_watcher);
    connect(call, &QDBusPendingCallWatcher::finished, this, [this, call] {
        const QDBusPendingReply<QDBusVariant> reply = *call;
        call->deleteLater();
        if (reply.isError()) {
            askAgainAfter(reply.error());
        } else if (reply.value().variant().toBool()) {
            handleHostFound();
        }
    });
}

/// Without a watcher the bus tells when there is one. One that is there and does not answer, or
/// does not know its property yet, may never send a signal about it.
void StatusNotifierHost::askAgainAfter(const QDBusError& error) {
    if (error.type() != QDBusError::ServiceUnknown && error.type() != QDBusError::Disconnected) {
        m_retryTimer.start();
    }
}

/// Once is enough: the toolkit itself goes over to the hosts that follow.
void StatusNotifierHost::handleHostFound() {
    if (!m_hasAppeared) {
        m_hasAppeared = true;
        m_observer(Event::appeared);
    }
}

void StatusNotifierHost::handleDisconnected() {
    disconnectFromBus();
    m_retryTimer.start();
    if (m_hasAppeared) {
        m_hasAppeared = false;
        m_observer(Event::lost);
    }
}

void StatusNotifierHost::disconnectFromBus() {
    if (m_watcher) {
        stopListening(m_watcher->connection());
    }
    m_watcher.reset();
    QDBusConnection::disconnectFromBus(connectionName(m_connectionNumber));
}

QString StatusNotifierHost::hint() const {
    if (!m_watcher) {
        return QStringLiteral(
            "no session bus answers here (DBUS_SESSION_BUS_ADDRESS), so no panel can be asked for "
            "an icon; it appears as soon as there are a bus and a panel. Start this inside a "
            "desktop session, or with --terminal.");
    }
    return QStringLiteral(
        "no panel here shows status icons, so there is no icon yet; it appears as soon as one "
        "does. GNOME needs the extension AppIndicator, other desktops a panel with a status tray "
        "(StatusNotifierItem). Without a desktop, use --terminal.");
}

/// Menus on the bus mark mnemonics by "_", and the toolkit turns the first "&" of a text into one.
QString StatusNotifierHost::menuText(const QString& text) const {
    QString result = text;
    result.replace(u'_', QLatin1String("__"));
    if (!result.contains(u'&')) {
        return result;
    }
    // Gives the toolkit an "&" to turn, and the mnemonic a character that nobody sees.
    constexpr char16_t kWordJoiner = 0x2060;
    return u'&' + QChar(kWordJoiner) + result;
}

std::unique_ptr<TrayHost> makeTrayHost() {
    return std::make_unique<StatusNotifierHost>();
}

} // namespace orvanta
