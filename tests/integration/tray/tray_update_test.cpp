// SPDX-License-Identifier: MIT
#include "integration/tray/runtime_channel.h"
#include "integration/tray/tray_process.h"

#include <QDir>
#include <QJsonDocument>
#include <QJsonObject>

namespace orvanta::tests {

class TrayUpdate : public TrayTest {
protected:
    void SetUp() override {
        ASSERT_FALSE(channel.baseUrl().isEmpty());
        const QJsonObject updates{{QStringLiteral("manifestBaseUrl"), channel.baseUrl()},
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

    QJsonObject currentState() const {
        QFile file(stateRoot() + QStringLiteral("/runtime/current.json"));
        return file.open(QIODevice::ReadOnly) ? QJsonDocument::fromJson(file.readAll()).object()
                                              : QJsonObject();
    }

    QStringList versions() const {
        return QDir(stateRoot() + QStringLiteral("/runtime/versions"))
            .entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
    }

    RuntimeChannel channel;
};

TEST_F(TrayUpdate, AFirstStartSeedsTheStoreFromTheShippedRuntime) {
    startAndWaitForConnector();
    EXPECT_EQ(runningVersion(), QStringLiteral("bootstrap"));
    EXPECT_EQ(versions(), QStringList{QStringLiteral("bootstrap")});
    EXPECT_EQ(currentState().value(QStringLiteral("currentVersion")).toString(),
              QStringLiteral("bootstrap"));
    EXPECT_TRUE(waitForRuntimeLine(QStringLiteral("Runtime manifest was not available.")));
}

TEST_F(TrayUpdate, AnUpdateIsCheckedInstalledConfirmedAndRolledBack) {
    startAndWaitForConnector();
    ASSERT_TRUE(channel.publish(QStringLiteral("1.1.0")));
    type(QStringLiteral("11"));
    ASSERT_TRUE(waitForRuntimeLine(QStringLiteral("Update available: 1.1.0")));
    type(QStringLiteral("12"));
    ASSERT_TRUE(waitForRuntimeLine(QStringLiteral("Updated to 1.1.0")));
    EXPECT_TRUE(waitUntil([this] { return runningVersion() == QStringLiteral("1.1.0"); }));
    EXPECT_TRUE(waitUntil([this] {
        return currentState().value(QStringLiteral("lastHealthyVersion")).toString() ==
               QStringLiteral("1.1.0");
    }));
    EXPECT_EQ(currentState().value(QStringLiteral("pendingHealthCheck")), QJsonValue(false));
    EXPECT_EQ(versions(), (QStringList{QStringLiteral("1.1.0"), QStringLiteral("bootstrap")}));

    // The update is over when the command can be chosen: once, since a second rollback undoes it.
    ASSERT_TRUE(waitForLine(QStringLiteral("13  Rollback Runtime")));
    type(QStringLiteral("13"));
    ASSERT_TRUE(waitForRuntimeLine(QStringLiteral("Rolled back to bootstrap.")));
    EXPECT_TRUE(waitUntil([this] { return runningVersion() == QStringLiteral("bootstrap"); }));
    EXPECT_TRUE(waitUntil([this] { return connector().answers(); }));
}

TEST_F(TrayUpdate, AVersionThatNeverComesUpIsRolledBackByItself) {
    startAndWaitForConnector();
    ASSERT_TRUE(channel.publish(QStringLiteral("3.0.0"), "process.exit(3);\n"));
    type(QStringLiteral("11"));
    ASSERT_TRUE(waitForRuntimeLine(QStringLiteral("Update available: 3.0.0")));
    type(QStringLiteral("12"));
    ASSERT_TRUE(waitForRuntimeLine(QStringLiteral("Rolled back to bootstrap."), 60'000));
    EXPECT_TRUE(waitUntil([this] { return connector().answers(); }));
    EXPECT_EQ(runningVersion(), QStringLiteral("bootstrap"));
    EXPECT_EQ(currentState().value(QStringLiteral("currentVersion")).toString(),
              QStringLiteral("bootstrap"));
}

TEST_F(TrayUpdate, AMandatoryVersionIsInstalledBeforeTheConnectorStarts) {
    ASSERT_TRUE(channel.publish(QStringLiteral("2.0.0"), {}, QStringLiteral("2.0.0")));
    startAndWaitForConnector();
    EXPECT_EQ(starts(), 1);
    EXPECT_EQ(runningVersion(), QStringLiteral("2.0.0"));
    EXPECT_TRUE(waitUntil([this] {
        return currentState().value(QStringLiteral("pendingHealthCheck")) == QJsonValue(false);
    }));
    EXPECT_EQ(currentState().value(QStringLiteral("lastHealthyVersion")).toString(),
              QStringLiteral("2.0.0"));
}

TEST_F(TrayUpdate, AWrongDigestInstallsNothingAndSaysSo) {
    startAndWaitForConnector();
    const int first = connectorPid();
    ASSERT_TRUE(channel.publish(QStringLiteral("1.1.0")));
    channel.editManifest("\"sha256\": \"", "\"sha256\": \"0");
    type(QStringLiteral("11"));
    ASSERT_TRUE(waitForRuntimeLine(QStringLiteral("Update available: 1.1.0")));
    type(QStringLiteral("12"));
    EXPECT_TRUE(
        waitForRuntimeLine(QStringLiteral("Runtime archive checksum did not match the manifest.")));
    EXPECT_EQ(versions(), QStringList{QStringLiteral("bootstrap")});
    EXPECT_EQ(connectorPid(), first);
}

} // namespace orvanta::tests
