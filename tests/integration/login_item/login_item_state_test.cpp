// SPDX-License-Identifier: MIT
#include "integration/login_item/login_item_on_disk.h"

namespace orvanta {
namespace {

TEST_F(LoginItemOnDisk, AnEntryForOtherDesktopsIsOff) {
    const QByteArray text = entry() + "OnlyShowIn=GNOME;\n";
    EXPECT_FALSE(isEnabledBy(text));
    environment.values.set("XDG_CURRENT_DESKTOP", "ubuntu:GNOME");
    EXPECT_TRUE(isEnabledBy(text));
    EXPECT_FALSE(isEnabledBy(entry() + "NotShowIn=GNOME;\n"));
}

TEST_F(LoginItemOnDisk, AnEntryWhoseTryExecCannotBeRunIsOff) {
    EXPECT_TRUE(isEnabledBy(entry() + "TryExec=/bin/sh\n"));
    EXPECT_TRUE(isEnabledBy(entry() + "TryExec=orvanta-tray\n"));
    EXPECT_FALSE(isEnabledBy(entry() + "TryExec=/gone/tray\n"));
    EXPECT_FALSE(isEnabledBy(entry() + "TryExec=orvanta-gone\n"));
    EXPECT_FALSE(isEnabledBy(entry() + "TryExec=/usr/bin\n")); // a folder
}

TEST_F(LoginItemOnDisk, OnlyAnEntryThatStartsThisProgramIsOn) {
    const QByteArray path = QFile::encodeName(program);
    EXPECT_TRUE(isEnabledBy(entry("orvanta-tray")));
    EXPECT_TRUE(isEnabledBy(entry("env QT_SCALE_FACTOR=2 " + path + " %U")));
    EXPECT_TRUE(isEnabledBy(entry("sh -c \"sleep 5; exec " + path + "\"")));
    EXPECT_TRUE(isEnabledBy(entry("sh -c 'sleep 5 && orvanta-tray'")));
    EXPECT_FALSE(isEnabledBy(entry("orvanta-gone " + path)));
    EXPECT_FALSE(isEnabledBy(entry(path + "-old")));
    EXPECT_FALSE(isEnabledBy(entry(QFile::encodeName(QDir::current().relativeFilePath(program)))));
}

TEST_F(LoginItemOnDisk, AnEntryOfAnotherCopyIsOffUntilRegistered) {
    const QString other = folder.path() + QStringLiteral("/old/orvanta-tray");
    install(other);
    EXPECT_FALSE(isEnabledBy(entry(QFile::encodeName(other))));
    item.registerItem();
    EXPECT_TRUE(item.isEnabled());
}

TEST_F(LoginItemOnDisk, AnotherNameOfTheProgramWillDo) {
    const QString link = folder.path() + QStringLiteral("/link");
    ASSERT_TRUE(QFile::link(program, link));
    EXPECT_TRUE(isEnabledBy(entry(QFile::encodeName(link))));
}

TEST_F(LoginItemOnDisk, TheSystemsEntryCountsWhereTheUserHasNone) {
    write(entryIn(second), entry());
    EXPECT_TRUE(item.isEnabled());
    write(entryIn(first), entry() + "Hidden=true\n");
    EXPECT_FALSE(item.isEnabled());
    write(entryPath, entry());
    EXPECT_TRUE(item.isEnabled());
    write(entryPath, entry() + "Hidden=true\n");
    ASSERT_TRUE(QFile::remove(entryIn(first)));
    EXPECT_FALSE(item.isEnabled());
}

TEST_F(LoginItemOnDisk, RelativeDirectoriesDoNotCount) {
    write(entryIn(first), entry());
    environment.values.set("XDG_CONFIG_DIRS",
                           QFile::encodeName(QDir::current().relativeFilePath(first)));
    EXPECT_FALSE(item.isEnabled());
}

TEST_F(LoginItemOnDisk, ALinkThatLeadsNowhereCoversTheSystemsEntry) {
    write(entryIn(first), entry());
    QDir().mkpath(config + QStringLiteral("/autostart"));
    ASSERT_TRUE(QFile::link(QStringLiteral("/gone"), entryPath));
    EXPECT_FALSE(item.isEnabled());
}

} // namespace
} // namespace orvanta
