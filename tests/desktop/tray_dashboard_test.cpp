// SPDX-License-Identifier: MIT
#include "desktop/desktop_test.h"

#include <QDir>
#include <QFile>

namespace orvanta::tests {

using TrayDashboard = DesktopTest;

TEST_F(TrayDashboard, WithoutABrowserItsAddressIsOnStandardError) {
    const QString bin = home.filePath(QStringLiteral("bin"));
    QDir().mkpath(bin);
    QFile opener(bin + QStringLiteral("/xdg-open"));
    ASSERT_TRUE(opener.open(QIODevice::WriteOnly));
    opener.write("#!/bin/sh\nexit 3\n");
    opener.close();
    ASSERT_TRUE(opener.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    environment.insert(QStringLiteral("PATH"),
                       bin + QLatin1Char(':') + environment.value(QStringLiteral("PATH")));
    startAndSettle();
    ASSERT_TRUE(connector().post(
        QStringLiteral("/demo/status-document"),
        R"({"state":"RUNNING","workspaceId":"w42","webAppUrl":"http://127.0.0.1:9/app"})"));
    ASSERT_TRUE(waitForEntry(QStringLiteral("w42"))) << scene();
    ASSERT_TRUE(choose(QStringLiteral("Open Dashboard")));
    ASSERT_TRUE(waitFor([this] { return trayErrors().contains('\n'); })) << scene();
    EXPECT_EQ(trayErrors(), "orvanta-tray: No browser could be opened (xdg-open failed); the "
                            "address is http://127.0.0.1:9/app/workspace/w42\n");
}

} // namespace orvanta::tests
