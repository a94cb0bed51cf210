// SPDX-License-Identifier: MIT
#include "platform/posix/instance_lock.h"

#include "base/platform_error.h"
#include "integration/terminal/main_loop.h"
#include "platform/environment.h"

#include <QFile>
#include <QTemporaryDir>

#include <csignal>
#include <gtest/gtest.h>
#include <optional>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern "C" char** environ;

namespace orvanta {
namespace {

struct Lock : testing::Test {
    QTemporaryDir folder;
    QString directory = folder.path() + QStringLiteral("/a/b");
};

TEST_F(Lock, IsHeldByOneUntilItLetsGo) {
    std::optional<InstanceLock> first(directory);
    EXPECT_TRUE(first->isHeld());
    EXPECT_FALSE(InstanceLock(directory).isHeld());
    first.reset();
    EXPECT_TRUE(InstanceLock(directory).isHeld());
}

TEST_F(Lock, NamesItsHolder) {
    QFile file(directory + QStringLiteral("/orvanta-tray.lock"));
    {
        const InstanceLock lock(directory);
        ASSERT_TRUE(file.open(QIODevice::ReadWrite));
        EXPECT_EQ(file.readAll(), QByteArray::number(static_cast<qint64>(::getpid())) + '\n');
        file.write("more and more");
    }
    file.close();
    const InstanceLock lock(directory);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), QByteArray::number(static_cast<qint64>(::getpid())) + '\n');
}

TEST_F(Lock, IsNotKeptByAChild) {
    std::optional<InstanceLock> lock(directory);
    pid_t child = 0;
    char program[] = "/bin/sleep";
    char duration[] = "60";
    char* arguments[] = {program, duration, nullptr};
    ASSERT_EQ(::posix_spawn(&child, program, nullptr, nullptr, arguments, environ), 0);
    lock.reset();
    // The child may be a moment away from having closed its copy.
    EXPECT_TRUE(waitUntil([this] { return InstanceLock(directory).isHeld(); }));
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
}

TEST_F(Lock, WhatCannotBeCreatedIsAnErrorThatSaysWhy) {
    QFile inTheWay(folder.path() + QStringLiteral("/a"));
    ASSERT_TRUE(inTheWay.open(QIODevice::WriteOnly));
    try {
        const InstanceLock lock(directory);
        FAIL();
    } catch (const PlatformError& error) {
        EXPECT_EQ(error.description(),
                  QStringLiteral("The lock “%1/orvanta-tray.lock” could not be opened: "
                                 "Not a directory.")
                      .arg(directory));
    }
}

TEST_F(Lock, BelongsIntoTheSessionsDirectoryWhenThereIsOne) {
    const QString stateRoot = QStringLiteral("/state");
    const auto chosen = [&](const QByteArray& value) {
        EnvironmentVariables variables;
        variables.set("XDG_RUNTIME_DIR", value);
        return instanceLockDirectory(variables, stateRoot);
    };
    EXPECT_EQ(chosen(QFile::encodeName(folder.path())), folder.path());
    EXPECT_EQ(chosen(""), stateRoot);
    EXPECT_EQ(chosen("."), stateRoot);
    EXPECT_EQ(chosen(QFile::encodeName(directory)), stateRoot);
    EXPECT_EQ(chosen("/dev/null"), stateRoot);
    EXPECT_EQ(instanceLockDirectory({}, stateRoot), stateRoot);
}

} // namespace
} // namespace orvanta
