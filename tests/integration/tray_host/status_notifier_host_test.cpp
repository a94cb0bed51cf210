// SPDX-License-Identifier: MIT
#include "platform/linux/tray_host.h"

#include <QCoreApplication>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QDeadlineTimer>
#include <QProcess>
#include <QTemporaryDir>

#include <gmock/gmock.h>

#include <functional>
#include <memory>
#include <vector>

namespace orvanta {
namespace {

using Event = TrayHost::Event;
using testing::ElementsAre;
using testing::IsEmpty;

const QString kWatcher = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString kWatcherPath = QStringLiteral("/StatusNotifierWatcher");

/// Knows items and hosts for all who ask; here only whether there is a host.
class Watcher : public QDBusVirtualObject {
public:
    explicit Watcher(const QDBusConnection& bus) : m_bus(bus) {
        m_bus.registerVirtualObject(kWatcherPath, this);
        m_bus.registerService(kWatcher);
    }
    void registerHost() {
        hasHost = true;
        m_bus.send(QDBusMessage::createSignal(kWatcherPath, kWatcher,
                                              QStringLiteral("StatusNotifierHostRegistered")));
    }
    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& bus) override {
        ++questions;
        return bus.send(message.createReply(QVariant::fromValue(QDBusVariant(hasHost))));
    }

    bool hasHost = false;
    int questions = 0;

private:
    QDBusConnection m_bus;
};

/// A session bus of its own, and somebody who watches for hosts on it.
class HostOnBus : public testing::Test {
protected:
    HostOnBus() { qputenv("DBUS_SESSION_BUS_ADDRESS", address().toUtf8()); }
    ~HostOnBus() override {
        stopBus();
        qunsetenv("DBUS_SESSION_BUS_ADDRESS");
    }

    /// The same in all tests: the library looks for the address once in a process.
    static QString address() {
        static const QTemporaryDir folder;
        return QStringLiteral("unix:path=%1/bus").arg(folder.path());
    }
    void startBus() {
        daemon.start(QStringLiteral("dbus-daemon"),
                     {QStringLiteral("--session"), QStringLiteral("--nofork"),
                      QStringLiteral("--print-address"), QStringLiteral("--address=") + address()});
        ASSERT_TRUE(daemon.waitForReadyRead(10'000));
    }
    void stopBus() {
        QDBusConnection::disconnectFromBus(watcherConnection());
        daemon.kill();
        daemon.waitForFinished();
    }
    std::unique_ptr<Watcher> startWatcher() {
        return std::make_unique<Watcher>(
            QDBusConnection::connectToBus(address(), watcherConnection()));
    }
    static QString watcherConnection() { return QStringLiteral("watcher"); }
    void watch() {
        host.watch([this](Event event) { events.push_back(event); });
    }
    static bool waitUntil(const std::function<bool()>& condition, int limitMs = 10'000) {
        const QDeadlineTimer deadline(limitMs);
        while (!condition() && !deadline.hasExpired()) {
            QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        }
        return condition();
    }
    static void letPass(int milliseconds) {
        waitUntil([] { return false; }, milliseconds);
    }

    QProcess daemon;
    StatusNotifierHost host;
    std::vector<Event> events;
};

TEST_F(HostOnBus, AWatcherWithoutAHostIsNone) {
    startBus();
    const auto watcher = startWatcher();
    watch();
    ASSERT_TRUE(waitUntil([&] { return watcher->questions > 0; }));
    letPass(200);
    EXPECT_THAT(events, IsEmpty());
}

TEST_F(HostOnBus, AHostThatComesAfterTheWatcherAppearsOnce) {
    startBus();
    const auto watcher = startWatcher();
    watch();
    ASSERT_TRUE(waitUntil([&] { return watcher->questions > 0; }));
    watcher->registerHost();
    ASSERT_TRUE(waitUntil([&] { return !events.empty(); }));
    watcher->registerHost();
    letPass(200);
    EXPECT_THAT(events, ElementsAre(Event::appeared));
}

TEST_F(HostOnBus, ABusThatIsAwayForLongIsFoundAgain) {
    startBus();
    auto watcher = startWatcher();
    watcher->hasHost = true;
    watch();
    ASSERT_TRUE(waitUntil([&] { return !events.empty(); }));
    stopBus();
    ASSERT_TRUE(waitUntil([&] { return events.size() == 2; }));
    letPass(5'000); // more than one attempt to connect
    startBus();
    watcher = startWatcher();
    watcher->hasHost = true;
    ASSERT_TRUE(waitUntil([&] { return events.size() == 3; }));
    EXPECT_THAT(events, ElementsAre(Event::appeared, Event::lost, Event::appeared));
}

TEST_F(HostOnBus, ABusThatComesLateIsFound) {
    watch();
    letPass(5'000);
    startBus();
    const auto watcher = startWatcher();
    watcher->hasHost = true;
    EXPECT_TRUE(waitUntil([&] { return !events.empty(); }));
}

} // namespace
} // namespace orvanta
