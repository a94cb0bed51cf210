// SPDX-License-Identifier: MIT
#pragma once

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace orvanta::tests {

/// Copies the executable `original` and the modules it may load into the folder `prefix`, where
/// they lie to each other as they did. Without what ships with it. Empty when that fails, else the
/// copy's path.
inline QString copyTray(const QString& original, const QString& prefix) {
    const QDir from(
        QFileInfo(original).dir().filePath(QStringLiteral("../lib/orvanta-tray/modules")));
    const QDir modules(prefix + QStringLiteral("/lib/orvanta-tray/modules"));
    const QString copy = prefix + QStringLiteral("/bin/orvanta-tray");
    bool isCopied = QDir().mkpath(modules.path()) && QDir().mkpath(QFileInfo(copy).path()) &&
                    QFile::copy(original, copy);
    for (const QString& module : from.entryList({QStringLiteral("*.so")})) {
        isCopied = isCopied && QFile::copy(from.filePath(module), modules.filePath(module));
    }
    return isCopied ? copy : QString();
}

} // namespace orvanta::tests
