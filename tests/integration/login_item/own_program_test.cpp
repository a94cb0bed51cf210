// SPDX-License-Identifier: MIT
#include "platform/linux/own_program.h"

#include "integration/login_item/login_item_on_disk.h"

namespace orvanta {
namespace {

struct OwnProgram : LoginItemOnDisk {
    QString invokedAs(const QString& name) const {
        return ownProgram(environment.variables(), QFile::encodeName(name), program);
    }
    QString link(const QString& path, const QString& target) const {
        QDir().mkpath(QFileInfo(path).path());
        EXPECT_TRUE(QFile::link(target, path));
        return path;
    }
};

TEST_F(OwnProgram, IsTheLinkItWasStartedBy) {
    const QString current = link(folder.path() + QStringLiteral("/current/tray"), program);
    EXPECT_EQ(invokedAs(current), current);
    EXPECT_EQ(invokedAs(program), program);
}

TEST_F(OwnProgram, IsLookedForWhereItsBareNameWasFound) {
    const QString onPath = link(folder.path() + QStringLiteral("/usr/tray"), program);
    environment.values.set("PATH", QFile::encodeName(QFileInfo(onPath).path()));
    EXPECT_EQ(invokedAs(QStringLiteral("tray")), onPath);
}

TEST_F(OwnProgram, IsItsFileWhenTheNameLeadsElsewhereOrNowhere) {
    const QString other = folder.path() + QStringLiteral("/other/orvanta-tray");
    install(other);
    for (const QString& name : {other, QStringLiteral("./orvanta-tray"), QStringLiteral("gone"),
                                QStringLiteral("/gone/tray"), QString()}) {
        EXPECT_EQ(invokedAs(name), program) << name.toStdString();
    }
}

} // namespace
} // namespace orvanta
