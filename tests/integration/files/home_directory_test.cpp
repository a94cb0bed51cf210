// SPDX-License-Identifier: MIT
#include "platform/posix/home_directory.h"

#include "integration/files/some_environment.h"

#include <gtest/gtest.h>

#include <QFile>

#include <pwd.h>
#include <unistd.h>

namespace orvanta {
namespace {

TEST(HomeDirectory, IsThatOfTheEnvironment) {
    EXPECT_EQ(homeDirectory(SomeEnvironment{{"HOME", "/home/ü x//"}}), QStringLiteral("/home/ü x"));
}

TEST(HomeDirectory, IsThatOfTheDatabaseWhenTheEnvironmentHasNone) {
    const QString fromDatabase = QFile::decodeName(::getpwuid(::getuid())->pw_dir);
    EXPECT_TRUE(fromDatabase.startsWith(u'/'));
    EXPECT_EQ(homeDirectory(SomeEnvironment{}), fromDatabase);
    EXPECT_EQ(homeDirectory(SomeEnvironment{{"HOME", ""}}), fromDatabase);
    EXPECT_EQ(homeDirectory(SomeEnvironment{{"HOME", "relative/home"}}), fromDatabase);
}

} // namespace
} // namespace orvanta
