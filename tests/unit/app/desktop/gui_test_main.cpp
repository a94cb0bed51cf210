// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <QApplication>

/// Takes the place of the common main: pictures and menus exist only in an application with
/// widgets, and this one needs no screen.
int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    ::testing::InitGoogleTest(&argc, argv);
    QApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
