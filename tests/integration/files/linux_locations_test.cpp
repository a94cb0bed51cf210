// SPDX-License-Identifier: MIT
#include "platform/linux/locations.h"
#include "platform/linux/running_executable.h"

#include "integration/files/some_environment.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QFileInfo>

namespace orvanta {
namespace {

const SomeEnvironment kHome{{"HOME", "/home/user"}};

TEST(LinuxLocations, ResourcesStandBesideTheFolderOfTheExecutable) {
    EXPECT_EQ(LinuxLocations(kHome, QStringLiteral("/opt/o/bin/orvanta-tray")).resourceRoot(),
              QStringLiteral("/opt/o/share/orvanta"));
    EXPECT_EQ(LinuxLocations(kHome, QStringLiteral("/bin/orvanta-tray")).resourceRoot(),
              QStringLiteral("/share/orvanta"));
}

TEST(LinuxLocations, FindsTheRunningExecutable) {
    const QString folder = QFileInfo(QCoreApplication::applicationFilePath()).canonicalPath();
    EXPECT_EQ(LinuxLocations(kHome, runningExecutable()).resourceRoot(),
              QFileInfo(folder).path() + QStringLiteral("/share/orvanta"));
}

TEST(LinuxLocations, DataGoWhereTheEnvironmentSays) {
    const auto support = [](const char* value) {
        return LinuxLocations(SomeEnvironment{{"HOME", "/home/user"}, {"XDG_DATA_HOME", value}},
                              runningExecutable())
            .applicationSupport();
    };
    EXPECT_EQ(support("/data/ü"), QStringLiteral("/data/ü"));
    EXPECT_EQ(support("/data//x/"), QStringLiteral("/data/x"));
    EXPECT_EQ(support("data"), QStringLiteral("/home/user/.local/share"));
    EXPECT_EQ(support(""), QStringLiteral("/home/user/.local/share"));
    EXPECT_EQ(LinuxLocations(kHome, runningExecutable()).applicationSupport(),
              QStringLiteral("/home/user/.local/share"));
    EXPECT_TRUE(LinuxLocations(SomeEnvironment{}, runningExecutable())
                    .applicationSupport()
                    .endsWith(QStringLiteral("/.local/share")));
}

} // namespace
} // namespace orvanta
