// SPDX-License-Identifier: MIT
#include "integration/login_item/login_item_on_disk.h"

#include <unistd.h>

namespace orvanta {
namespace {

constexpr uid_t kNobody = 65534;

/// Root may write everywhere, so as long as this lives, root is somebody else.
class WithoutPrivileges {
public:
    WithoutPrivileges(const WithoutPrivileges&) = delete;
    WithoutPrivileges& operator=(const WithoutPrivileges&) = delete;
    WithoutPrivileges() {
        if (m_user == 0) {
            EXPECT_EQ(::seteuid(kNobody), 0);
        }
    }
    ~WithoutPrivileges() { EXPECT_EQ(::seteuid(m_user), 0); }

private:
    const uid_t m_user = ::geteuid();
};

TEST_F(LoginItemOnDisk, RegistersAndUnregisters) {
    EXPECT_FALSE(item.isEnabled());
    item.registerItem();
    EXPECT_TRUE(item.isEnabled());
    EXPECT_TRUE(QFile::exists(entryPath));
    item.registerItem();
    EXPECT_TRUE(item.isEnabled());
    item.unregisterItem();
    EXPECT_FALSE(item.isEnabled());
    EXPECT_FALSE(QFile::exists(entryPath));
    item.unregisterItem();
}

TEST_F(LoginItemOnDisk, LeavesNoOtherFileBehind) {
    item.registerItem();
    EXPECT_EQ(QDir(config + QStringLiteral("/autostart"))
                  .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
              QStringList{QStringLiteral("com.orvanta.tray.desktop")});
}

TEST_F(LoginItemOnDisk, AProgramWithAnOddPathCanBeRegistered) {
    for (const QString& name :
         {QStringLiteral("/a b\"c`$\\%U;#='&(é)\n/tray"), QStringLiteral("/100 %/tray")}) {
        const QString odd = folder.path() + name;
        install(odd);
        LinuxLoginItem oddItem(environment, odd);
        oddItem.registerItem();
        EXPECT_TRUE(oddItem.isEnabled()) << name.toStdString();
        EXPECT_FALSE(item.isEnabled()) << name.toStdString();
    }
}

TEST_F(LoginItemOnDisk, RegisteringUndoesWhatSwitchedItOff) {
    for (const QByteArray key : {"Hidden=true", "X-GNOME-Autostart-enabled=false",
                                 "OnlyShowIn=Elsewhere;", "TryExec=/gone/tray"}) {
        EXPECT_FALSE(isEnabledBy(entry() + key)) << key.toStdString();
        item.registerItem();
        EXPECT_TRUE(item.isEnabled()) << key.toStdString();
    }
}

TEST_F(LoginItemOnDisk, AProgramThatHasBeenMovedAwayIsOffAndCannotBeRegistered) {
    item.registerItem();
    ASSERT_TRUE(QFile::rename(program, program + QStringLiteral(".moved")));
    EXPECT_FALSE(item.isEnabled());
    EXPECT_EQ(failureOf(&LoginItem::registerItem),
              QStringLiteral("The program “%1” could not be found: No such file or directory.")
                  .arg(program));
    item.unregisterItem();
    EXPECT_FALSE(QFile::exists(entryPath));
}

TEST_F(LoginItemOnDisk, AMaskedEntryIsOffAndRegisteringReplacesTheMask) {
    const QString target = folder.path() + QStringLiteral("/target");
    write(target, {});
    QDir().mkpath(config + QStringLiteral("/autostart"));
    ASSERT_TRUE(QFile::link(target, entryPath));
    EXPECT_FALSE(item.isEnabled());
    item.registerItem();
    EXPECT_TRUE(item.isEnabled());
    EXPECT_FALSE(QFileInfo(entryPath).isSymLink());
    EXPECT_EQ(QFileInfo(target).size(), 0);
}

TEST_F(LoginItemOnDisk, UnregisteringCoversTheSystemsEntry) {
    write(entryIn(second), entry());
    item.unregisterItem();
    EXPECT_FALSE(item.isEnabled());
    EXPECT_TRUE(QFile::exists(entryIn(second)));
    item.registerItem();
    EXPECT_TRUE(item.isEnabled());
    item.unregisterItem();
    EXPECT_FALSE(item.isEnabled());
}

TEST_F(LoginItemOnDisk, TheUsersEntryCoversNothingWhenListedAmongTheSystems) {
    environment.values.set("XDG_CONFIG_DIRS", QFile::encodeName(config + QStringLiteral("/")));
    item.registerItem();
    item.unregisterItem();
    EXPECT_FALSE(QFile::exists(entryPath));
}

TEST_F(LoginItemOnDisk, LivesInTheHomeDirectoryByDefault) {
    environment.values.set("XDG_CONFIG_HOME", "relative");
    environment.values.set("HOME", QFile::encodeName(folder.path()));
    item.registerItem();
    EXPECT_TRUE(QFile::exists(entryIn(folder.path() + QStringLiteral("/.config"))));
}

TEST_F(LoginItemOnDisk, FailuresNameTheThingAndTheReason) {
    write(config, {});
    EXPECT_EQ(failureOf(&LoginItem::registerItem),
              QStringLiteral("The folder “%1/autostart” could not be created: Not a directory.")
                  .arg(config));
    EXPECT_EQ(failureOf(&LoginItem::unregisterItem), QString());
}

TEST_F(LoginItemOnDisk, AnUnwritableFolderIsAnErrorEitherWay) {
    const auto everyoneMayRead = QFile::Permissions::fromInt(0x7755);
    const QString autostart = QFileInfo(entryPath).path();
    write(entryPath, entry() + "Hidden=true\n");
    QFile::setPermissions(folder.path(), everyoneMayRead);
    QFile::setPermissions(program, everyoneMayRead);
    QFile::setPermissions(autostart, QFile::Permissions::fromInt(0x5555));
    {
        const WithoutPrivileges nobody;
        EXPECT_EQ(failureOf(&LoginItem::registerItem),
                  QStringLiteral("The file “%1” could not be written: Permission denied.")
                      .arg(entryPath));
        EXPECT_EQ(failureOf(&LoginItem::unregisterItem),
                  QStringLiteral("The file “%1” could not be removed: Permission denied.")
                      .arg(entryPath));
    }
    QFile::setPermissions(autostart, everyoneMayRead); // or it could not be cleared away
}

TEST_F(LoginItemOnDisk, ADirectoryInThePlaceOfTheEntryIsAnError) {
    QDir().mkpath(entryPath);
    EXPECT_FALSE(item.isEnabled());
    const QString failure = failureOf(&LoginItem::registerItem);
    EXPECT_TRUE(
        failure.startsWith(QStringLiteral("The file “%1” could not be written: ").arg(entryPath)))
        << failure.toStdString();
    EXPECT_EQ(failureOf(&LoginItem::unregisterItem),
              QStringLiteral("The file “%1” could not be removed: Is a directory.").arg(entryPath));
}

} // namespace
} // namespace orvanta
