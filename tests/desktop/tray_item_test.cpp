// SPDX-License-Identifier: MIT
#include "desktop/bus_monitor.h"
#include "desktop/desktop_test.h"

namespace orvanta::tests {

/// The icon as panels know it.
using TrayItemOnBus = DesktopTest;

TEST_F(TrayItemOnBus, AChangeOfTheMenuAloneLeavesTheIconAlone) {
    startAndSettle();
    const QString name = item->uniqueName();
    BusMonitor monitor(session.busAddress());
    ASSERT_TRUE(monitor.catchUp());
    monitor.forget();
    ASSERT_TRUE(connector().post(QStringLiteral("/demo/status-document"),
                                 R"({"state":"NEEDS_LOGIN","workspaceId":"w42"})"));
    ASSERT_TRUE(waitForEntry(QStringLiteral("w42"))) << scene();
    ASSERT_TRUE(monitor.catchUp());
    EXPECT_GE(monitor.count(name, QStringLiteral("ItemsPropertiesUpdated")), 1);
    EXPECT_EQ(monitor.count(name, QStringLiteral("NewIcon")), 0);
    EXPECT_EQ(monitor.count(name, QStringLiteral("NewToolTip")), 0);
}

TEST_F(TrayItemOnBus, APanelMayLeaveTheCallForTheMenuToTheTray) {
    startAndSettle();
    ASSERT_TRUE(item->askForMenu());
    EXPECT_TRUE(waitFor([this] { return isMenuOpen(); })) << scene();
    ASSERT_TRUE(item->askForMenu());
    EXPECT_TRUE(waitFor([this] { return !isMenuOpen(); })) << scene();
}

} // namespace orvanta::tests
