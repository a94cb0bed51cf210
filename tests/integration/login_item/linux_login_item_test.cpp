// SPDX-License-Identifier: MIT
#include "platform/linux/login_item.h"

#include "base/platform_error.h"
#include "fakes/fake_desktop.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace orvanta {
namespace {

class LoginItemOnDisk : public testing::Test {
protected:
    LoginItemOnDisk() { environment.values.set("XDG_CONFIG_HOME", QFile::encodeName(config)); }

    QString entryPath() const {
        return config + QStringLiteral("/autostart/com.orvanta.tray.desktop");
    }
    void writeEntry(const QByteArray& text) {
        QDir().mkpath(config + QStringLiteral("/autostart"));
        QFile file(entryPath());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
    }
    QString failureOf(void (LoginItem::*change)()) {
        try {
            (item.*change)();
        } catch (const PlatformError& error) {
            return error.description();
        }
        return {};
    }

    QTemporaryDir folder;
    QString config = folder.path() + QStringLiteral("/home/config");
    fakes::FakeEnvironment environment;
    LinuxLoginItem item{environment, QStringLiteral("/bin/sh")};
};

TEST_F(LoginItemOnDisk, RegistersAndUnregisters) {
    EXPECT_FALSE(item.isEnabled());
    item.registerItem();
    EXPECT_TRUE(item.isEnabled());
    EXPECT_TRUE(QFile::exists(entryPath()));
    item.registerItem();
    EXPECT_TRUE(item.isEnabled());
    item.unregisterItem();
    EXPECT_FALSE(item.isEnabled());
    EXPECT_FALSE(QFile::exists(entryPath()));
    item.unregisterItem();
}

TEST_F(LoginItemOnDisk, LeavesNoOtherFileBehind) {
    item.registerItem();
    EXPECT_EQ(QDir(config + QStringLiteral("/autostart"))
                  .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
              QStringList{QStringLiteral("com.orvanta.tray.desktop")});
}

TEST_F(LoginItemOnDisk, RegisteringUndoesWhatSwitchedItOff) {
    writeEntry("[Desktop Entry]\nHidden=true\nX-GNOME-Autostart-enabled=false\n");
    EXPECT_FALSE(item.isEnabled());
    item.registerItem();
    EXPECT_TRUE(item.isEnabled());
}

TEST_F(LoginItemOnDisk, AnEntryOfAProgramThatIsGoneIsOff) {
    writeEntry("[Desktop Entry]\nExec=/bin/sh\nTryExec=/bin/sh\n");
    EXPECT_TRUE(item.isEnabled());
    writeEntry("[Desktop Entry]\nExec=/gone/tray\nTryExec=/gone/tray\n");
    EXPECT_FALSE(item.isEnabled());
}

TEST_F(LoginItemOnDisk, AMaskedEntryIsOff) {
    QDir().mkpath(config + QStringLiteral("/autostart"));
    ASSERT_TRUE(QFile::link(QStringLiteral("/dev/null"), entryPath()));
    EXPECT_FALSE(item.isEnabled());
}

TEST_F(LoginItemOnDisk, LivesInTheHomeDirectoryByDefault) {
    environment.values.set("XDG_CONFIG_HOME", "relative");
    environment.values.set("HOME", QFile::encodeName(folder.path()));
    item.registerItem();
    EXPECT_TRUE(QFile::exists(folder.path() +
                              QStringLiteral("/.config/autostart/com.orvanta.tray.desktop")));
}

TEST_F(LoginItemOnDisk, FailuresNameTheThingAndTheReason) {
    QDir().mkpath(folder.path() + QStringLiteral("/home"));
    QFile inTheWay(config);
    ASSERT_TRUE(inTheWay.open(QIODevice::WriteOnly));
    EXPECT_EQ(failureOf(&LoginItem::registerItem),
              QStringLiteral("The folder “%1/autostart” could not be created: Not a directory.")
                  .arg(config));
    EXPECT_EQ(failureOf(&LoginItem::unregisterItem), QString());
}

TEST_F(LoginItemOnDisk, ADirectoryInThePlaceOfTheEntryIsAnError) {
    QDir().mkpath(entryPath());
    EXPECT_FALSE(item.isEnabled());
    const QString failure = failureOf(&LoginItem::registerItem);
    EXPECT_TRUE(
        failure.startsWith(QStringLiteral("The file “%1” could not be written: ").arg(entryPath())))
        << failure.toStdString();
    EXPECT_EQ(
        failureOf(&LoginItem::unregisterItem),
        QStringLiteral("The file “%1” could not be removed: Is a directory.").arg(entryPath()));
}

} // namespace
} // namespace orvanta
