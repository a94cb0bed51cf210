// SPDX-License-Identifier: MIT
#include "desktop/bus_monitor.h"
#include "desktop/desktop_test.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>

namespace orvanta::tests {

using TrayMenuCommands = DesktopTest;

TEST_F(TrayMenuCommands, PairingAndSigningOutReachTheConnectorOnce) {
    startAndSettle();
    ASSERT_TRUE(choose(QStringLiteral("Sign In / Pair")));
    ASSERT_TRUE(waitForEntry(QStringLiteral("Status: Online"))) << scene();
    ASSERT_TRUE(choose(QStringLiteral("Sign Out")));
    ASSERT_TRUE(waitForEntry(QStringLiteral("Status: Not Paired"))) << scene();
    EXPECT_EQ(requests(QStringLiteral("POST /api/ov/pair/start")), 1);
    EXPECT_EQ(requests(QStringLiteral("POST /api/ov/logout?unpair=1")), 1);
}

TEST_F(TrayMenuCommands, WhatIsGreyDoesNothing) {
    startAndSettle();
    ASSERT_TRUE(choose(QStringLiteral("Sign Out")));
    ASSERT_TRUE(choose(QStringLiteral("Sign In / Pair")));
    ASSERT_TRUE(waitForEntry(QStringLiteral("Status: Online"))) << scene();
    EXPECT_EQ(requests(QStringLiteral("POST /api/ov/logout?unpair=1")), 0);
}

TEST_F(TrayMenuCommands, RestartGivesAnotherConnectorOnTheSamePort) {
    startEverything();
    const int first = connectorPid();
    const int port = connectorPort();
    ASSERT_TRUE(choose(QStringLiteral("Restart")));
    ASSERT_TRUE(waitForNewConnector(first)) << scene();
    EXPECT_EQ(connectorPort(), port);
    EXPECT_EQ(starts(), 2);
    EXPECT_EQ(requests(QStringLiteral("POST /api/server/restart")), 1);
}

TEST_F(TrayMenuCommands, CheckSaysHowItWent) {
    startAndSettle();
    ASSERT_TRUE(choose(QStringLiteral("Check for Runtime Updates")));
    // Chosen by the user, it says so as an error too.
    EXPECT_TRUE(waitForEntry(QStringLiteral("Runtime updater disabled in config.json.")))
        << scene();
}

TEST_F(TrayMenuCommands, TheMarkOfLaunchAtLoginFollowsTheLoginItem) {
    startEverything();
    const QString loginItem =
        session.configDirectory() + QStringLiteral("/autostart/com.orvanta.tray.desktop");
    const auto isMarked = [this] {
        return menu().entry(QStringLiteral("Launch at Login")).isChecked;
    };
    ASSERT_FALSE(isMarked());
    ASSERT_TRUE(choose(QStringLiteral("Launch at Login")));
    ASSERT_TRUE(waitFor(isMarked)) << scene();
    EXPECT_TRUE(QFile::exists(loginItem));
    ASSERT_TRUE(choose(QStringLiteral("Launch at Login")));
    ASSERT_TRUE(waitFor([&] { return !isMarked(); })) << scene();
    EXPECT_FALSE(QFile::exists(loginItem));
}

TEST_F(TrayMenuCommands, TheMarkIsSaidOnce) {
    startAndSettle();
    BusMonitor monitor(session.busAddress());
    ASSERT_TRUE(monitor.catchUp());
    monitor.forget();
    ASSERT_TRUE(choose(QStringLiteral("Launch at Login")));
    ASSERT_TRUE(waitFor([this] {
        return menu().entry(QStringLiteral("Launch at Login")).isChecked;
    })) << scene();
    holdsFor([] { return true; }, std::chrono::milliseconds(500));
    ASSERT_TRUE(monitor.catchUp());
    EXPECT_EQ(monitor.count(item->uniqueName(), QStringLiteral("ItemsPropertiesUpdated")), 1);
    EXPECT_TRUE(menu().entry(QStringLiteral("Launch at Login")).isChecked);
}

TEST_F(TrayMenuCommands, TheMarkStaysAwayWhenThereCanBeNoLoginItem) {
    QFile obstacle(session.configDirectory() + QStringLiteral("/autostart"));
    ASSERT_TRUE(obstacle.open(QIODevice::WriteOnly));
    startEverything();
    ASSERT_TRUE(choose(QStringLiteral("Launch at Login")));
    ASSERT_TRUE(waitFor([this] { return menu().entries().value(2).isVisible; })) << scene();
    // Cut into lines, after spaces and slashes.
    EXPECT_EQ(
        menu().entries().value(2).shownText().remove(QRegularExpression(QStringLiteral("\\s"))),
        QStringLiteral("Launch at login failed: The folder “%1” could not be created: "
                       "Not a directory.")
            .arg(obstacle.fileName())
            .remove(QLatin1Char(' ')))
        << scene();
    EXPECT_FALSE(menu().entry(QStringLiteral("Launch at Login")).isChecked);
}

TEST_F(TrayMenuCommands, OpenDashboardHandsTheWorkspacesAddressToTheDesktop) {
    const QString bin = home.filePath(QStringLiteral("bin"));
    const QString opened = home.filePath(QStringLiteral("opened"));
    QDir().mkpath(bin);
    QFile opener(bin + QStringLiteral("/xdg-open"));
    ASSERT_TRUE(opener.open(QIODevice::WriteOnly));
    opener.write("#!/bin/sh\necho \"$1\" >'" + opened.toUtf8() + ".new' && mv '" + opened.toUtf8() +
                 ".new' '" + opened.toUtf8() + "'\n");
    opener.close();
    ASSERT_TRUE(opener.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    environment.insert(QStringLiteral("PATH"),
                       bin + QLatin1Char(':') + environment.value(QStringLiteral("PATH")));
    startEverything();
    ASSERT_TRUE(connector().post(
        QStringLiteral("/demo/status-document"),
        R"({"state":"RUNNING","workspaceId":"a b","webAppUrl":"http://127.0.0.1:9/app"})"));
    ASSERT_TRUE(waitForEntry(QStringLiteral("a b"))) << scene();
    ASSERT_TRUE(choose(QStringLiteral("Open Dashboard")));
    ASSERT_TRUE(waitFor([&] { return QFile::exists(opened); })) << scene();
    QFile file(opened);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), "http://127.0.0.1:9/app/workspace/a%20b\n");
}

TEST_F(TrayMenuCommands, TheConnectorDoesNotInheritWhatAClickBrings) {
    startAndSettle();
    const int first = connectorPid();
    ASSERT_TRUE(item->announceClick(QStringLiteral("token-of-a-click")));
    ASSERT_TRUE(choose(QStringLiteral("Restart")));
    ASSERT_TRUE(waitForNewConnector(first)) << scene();
    QFile variables(QStringLiteral("/proc/%1/environ").arg(connectorPid()));
    ASSERT_TRUE(variables.open(QIODevice::ReadOnly));
    const QByteArray inherited = variables.readAll();
    EXPECT_TRUE(inherited.contains(session.mark()));
    EXPECT_FALSE(inherited.contains("token-of-a-click"));
}

} // namespace orvanta::tests
