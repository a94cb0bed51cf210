// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/login_item.h"

#include "base/platform_error.h"
#include "fakes/fake_desktop.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace orvanta {

/// A login item with directories of its own, and helpers to fill them.
class LoginItemOnDisk : public testing::Test {
protected:
    LoginItemOnDisk() {
        environment.values.set("XDG_CONFIG_HOME", QFile::encodeName(config));
        environment.values.set("XDG_CONFIG_DIRS", QFile::encodeName(first + u':' + second));
        environment.values.set("PATH", "/usr/bin:/bin:" + QFile::encodeName(programFolder));
        install(program);
    }

    static QString entryIn(const QString& configuration) {
        return configuration + QStringLiteral("/autostart/com.orvanta.tray.desktop");
    }
    static void write(const QString& path, const QByteArray& text) {
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << path.toStdString();
        file.write(text);
    }
    static void install(const QString& path) {
        write(path, "#!/bin/sh\n");
        QFile::setPermissions(path, QFile::ReadOwner | QFile::ExeOwner);
    }
    static QByteArray entry(const QByteArray& exec) {
        return "[Desktop Entry]\nType=Application\nExec=" + exec + "\n";
    }
    QByteArray entry() const { return entry(QFile::encodeName(program)); }
    bool isEnabledBy(const QByteArray& text) {
        write(entryPath, text);
        return item.isEnabled();
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
    const QString config = folder.path() + QStringLiteral("/home/config");
    const QString first = folder.path() + QStringLiteral("/system/first");
    const QString second = folder.path() + QStringLiteral("/system/second");
    const QString programFolder = folder.path() + QStringLiteral("/bin");
    const QString program = programFolder + QStringLiteral("/orvanta-tray");
    const QString entryPath = entryIn(config);
    fakes::FakeEnvironment environment;
    LinuxLoginItem item{environment, program};
};

} // namespace orvanta
