// SPDX-License-Identifier: MIT
#pragma once

#include "integration/tray/runtime_channel.h"
#include "integration/tray/tray_process.h"

#include <QDir>
#include <QJsonDocument>
#include <QJsonObject>

namespace orvanta::tests {

/// A tray whose configuration follows a release channel of its own.
class TrayUpdate : public TrayTest {
protected:
    void SetUp() override {
        ASSERT_FALSE(channel.baseUrl().isEmpty());
        follow(channel.baseUrl());
    }

    /// Writes a configuration with this address of the channel.
    void follow(const QString& baseUrl) const {
        const QJsonObject updates{{QStringLiteral("manifestBaseUrl"), baseUrl},
                                  {QStringLiteral("channel"), QStringLiteral("beta")}};
        const QJsonObject poll{{QStringLiteral("statusPollIntervalSeconds"), 0.2}};
        writeStateFile(QStringLiteral("config.json"),
                       QJsonDocument(QJsonObject{{QStringLiteral("runtimeUpdates"), updates},
                                                 {QStringLiteral("tray"), poll}})
                           .toJson());
    }

    QString runtimeLine() { return lastLine(QStringLiteral("Runtime: ")); }
    bool waitForRuntimeLine(const QString& text, int limitMs = 30'000) {
        return waitUntil([&] { return runtimeLine() == QStringLiteral("Runtime: ") + text; },
                         limitMs);
    }

    /// Lets the tray see that `version` is offered and install it; false when it does not see it.
    bool checkAndUpdateTo(const QString& version) {
        type(QStringLiteral("11"));
        if (!waitForRuntimeLine(QStringLiteral("Update available: ") + version)) {
            return false;
        }
        type(QStringLiteral("12"));
        return true;
    }

    /// The directory name of the version that the youngest connector was started from.
    QString runningVersion() const {
        const QString root = journal(QStringLiteral("start"))
                                 .last()
                                 .value(QStringLiteral("environment"))
                                 .toObject()
                                 .value(QStringLiteral("ORVANTA_RUNTIME_ROOT"))
                                 .toString();
        return root.section(QLatin1Char('/'), -2, -2);
    }
    bool waitForRunningVersion(const QString& version) {
        return waitUntil([&] { return runningVersion() == version; });
    }

    QJsonObject currentState() const {
        QFile file(storePath(QStringLiteral("current.json")));
        return file.open(QIODevice::ReadOnly) ? QJsonDocument::fromJson(file.readAll()).object()
                                              : QJsonObject();
    }
    QString inState(const char* member) const {
        return currentState().value(QLatin1String(member)).toString();
    }

    QString storePath(const QString& name) const {
        return stateRoot() + QStringLiteral("/runtime/") + name;
    }

    QStringList versions() const {
        return QDir(storePath(QStringLiteral("versions")))
            .entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
    }

    RuntimeChannel channel;
};

} // namespace orvanta::tests
