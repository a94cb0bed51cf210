// SPDX-License-Identifier: MIT
#include "app/desktop_application.h"

#include <gtest/gtest.h>

#include <QGuiApplication>
#include <QTimer>
#include <QWidget>

namespace orvanta {
namespace {

char programName[] = "orvanta-tray";
char* arguments[] = {programName, nullptr};

TEST(DesktopApplication, OutlivesItsLastWindow) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    int count = 1;
    const auto application = makeDesktopApplication(count, arguments, 1);
    QWidget window;
    window.show();
    bool isThereAfterwards = false;
    QTimer::singleShot(50, &window, &QWidget::close);
    QTimer::singleShot(300, application.get(), [&] {
        isThereAfterwards = true;
        QCoreApplication::quit();
    });
    QCoreApplication::exec();
    EXPECT_TRUE(isThereAfterwards);
}

TEST(DesktopApplication, HasTheNameThatDesktopsShow) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    int count = 1;
    const auto application = makeDesktopApplication(count, arguments, 1);
    EXPECT_EQ(QCoreApplication::applicationName(), QStringLiteral("Orvanta"));
    EXPECT_EQ(QGuiApplication::desktopFileName(), QStringLiteral("com.orvanta.tray"));
}

} // namespace
} // namespace orvanta

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
