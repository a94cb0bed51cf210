// SPDX-License-Identifier: MIT
#include "desktop/bus_monitor.h"
#include "desktop/desktop_test.h"

#include <QElapsedTimer>

namespace orvanta::tests {

class TrayAndItsHost : public DesktopTest {
protected:
    bool waitForIcon() {
        return waitFor([this] { return !iconArea().isEmpty(); });
    }
    bool waitForNoIcon() {
        return waitFor([this] { return iconArea().isEmpty(); });
    }
    void expectItemWorks() {
        ASSERT_TRUE(waitForItem()) << scene();
        ASSERT_TRUE(waitForIcon()) << scene();
        EXPECT_TRUE(waitForToolTip(QStringLiteral("Orvanta Not Paired"))) << scene();
        ASSERT_TRUE(choose(QStringLiteral("Sign In / Pair"))) << scene();
        EXPECT_TRUE(waitForToolTip(QStringLiteral("Orvanta Online"))) << scene();
        EXPECT_EQ(item->registeredCount(), 1);
    }
};

TEST_F(TrayAndItsHost, ThePanelThatReplacesACrashedOneShowsTheIcon) {
    startEverything();
    ASSERT_TRUE(waitForIcon()) << scene();
    panel->kill();
    ASSERT_TRUE(waitFor([this] { return !panel->takesIcons(); })) << scene();
    ASSERT_TRUE(panel->start()) << scene();
    expectItemWorks();
}

TEST_F(TrayAndItsHost, ATrayThatCameBeforeThePanelIsShownWhenItComes) {
    startTrayAsIcon();
    ASSERT_TRUE(waitFor([this] { return connectorPort() > 0 && connector().answers(); }));
    ASSERT_TRUE(panel->start()) << scene();
    expectItemWorks();
    EXPECT_EQ(trayErrors(), "");
}

TEST_F(TrayAndItsHost, WithoutAPanelTheUserIsToldOnce) {
    QElapsedTimer elapsed;
    elapsed.start();
    startTrayAsIcon();
    const auto hints = [this] { return trayErrors().count("no panel here shows status icons"); };
    ASSERT_TRUE(waitFor([&] { return hints() > 0; }, std::chrono::seconds(14))) << scene();
    EXPECT_GE(elapsed.elapsed(), 9'500);
    EXPECT_EQ(trayErrors().count('\n'), 1) << trayErrors().toStdString();
    ASSERT_TRUE(panel->start()) << scene();
    expectItemWorks();
    EXPECT_EQ(trayErrors().count('\n'), 1) << trayErrors().toStdString();
}

TEST_F(TrayAndItsHost, TheEndOfTheBusStopsNeitherTheConnectorNorTheTray) {
    startEverything();
    ASSERT_TRUE(waitForIcon()) << scene();
    session.killBus();
    ASSERT_TRUE(waitForNoIcon());
    const int first = connectorPid();
    ASSERT_TRUE(connector().post(QStringLiteral("/demo/crash?code=3")));
    ASSERT_TRUE(waitForNewConnector(first));

    panel = std::make_unique<Panel>(session);
    ASSERT_TRUE(session.startBus());
    connectToBus();
    ASSERT_TRUE(panel->start()) << scene();
    expectItemWorks();
}

TEST_F(TrayAndItsHost, ANewIconIsNoStreamOfLayouts) {
    BusMonitor monitor(session.busAddress());
    ASSERT_TRUE(monitor.catchUp());
    startAndSettle();
    ASSERT_TRUE(monitor.catchUp());
    EXPECT_GE(monitor.from(item->uniqueName()).size(), 3);
    EXPECT_EQ(monitor.count(item->uniqueName(), QStringLiteral("LayoutUpdated")), 0);
}

TEST_F(TrayAndItsHost, EachEntryThatDiffersIsSaidOnceAndTheMenuIsNotLaidOutAnew) {
    startAndSettle();
    const QString name = item->uniqueName();
    BusMonitor monitor(session.busAddress());
    ASSERT_TRUE(monitor.catchUp());
    monitor.forget();
    ASSERT_TRUE(connector().post(QStringLiteral("/demo/state?value=RUNNING")));
    ASSERT_TRUE(waitForToolTip(QStringLiteral("Orvanta Online"))) << scene();
    ASSERT_TRUE(waitForEntry(QStringLiteral("Status: Online"))) << scene();
    ASSERT_TRUE(monitor.catchUp());
    EXPECT_EQ(monitor.count(name, QStringLiteral("NewIcon")), 1);
    EXPECT_EQ(monitor.count(name, QStringLiteral("NewToolTip")), 1);
    // The status, and the two commands of which the one is offered now instead of the other.
    EXPECT_EQ(monitor.count(name, QStringLiteral("ItemsPropertiesUpdated")), 3);
    EXPECT_EQ(monitor.count(name, QStringLiteral("LayoutUpdated")), 0);
}

TEST_F(TrayAndItsHost, WithoutADisplayTheLastLineSaysWhatToDo) {
    environment.remove(QStringLiteral("DISPLAY"));
    startTrayAsIcon();
    EXPECT_EQ(waitForExit(), 1);
    const QByteArray last = trayErrors().trimmed().split('\n').last();
    EXPECT_TRUE(last.startsWith("orvanta-tray: no desktop can be reached here"))
        << trayErrors().toStdString();
    EXPECT_TRUE(last.contains("--terminal")) << last.toStdString();
    EXPECT_EQ(starts(), 0);
}

} // namespace orvanta::tests
