// SPDX-License-Identifier: MIT
#include "integration/tray/tray_update.h"

#include <QFile>

namespace orvanta::tests {

/// Archives as a publisher can make them, right and wrong, each with the digest it has.
class TrayArchive : public TrayUpdate {
protected:
    /// Says `message` in both lines of the menu and goes on as before.
    void expectRefused(const QByteArray& archive, const QString& message) {
        const int connectorBefore = connectorPid();
        channel.offer(QStringLiteral("1.1.0"), archive);
        ASSERT_TRUE(checkAndUpdateTo(QStringLiteral("1.1.0")));
        EXPECT_TRUE(waitForRuntimeLine(message)) << runtimeLine().toStdString();
        EXPECT_TRUE(waitForLine(message));
        EXPECT_EQ(versions(), QStringList{QStringLiteral("1.0.0")});
        EXPECT_EQ(inState("currentVersion"), QStringLiteral("1.0.0"));
        EXPECT_EQ(connectorPid(), connectorBefore);
    }

    /// The demo as `version` in two wrappers of which `broken` is incomplete.
    QByteArray archiveWithTwoWrappers(const QString& version, const QString& broken) const {
        for (const char* name : {"first", "second"}) {
            channel.makeRuntime(version + u'/' + QLatin1String(name), version);
        }
        EXPECT_TRUE(QFile::remove(
            channel.path(version + u'/' + broken + QStringLiteral("/local-server/server.js"))));
        return channel.archiveOf(channel.path(version));
    }

    void expectInstalled(const QString& version, const QByteArray& archive) {
        channel.offer(version, archive);
        ASSERT_TRUE(checkAndUpdateTo(version));
        EXPECT_TRUE(waitForRuntimeLine(QStringLiteral("Updated to ") + version))
            << runtimeLine().toStdString();
        EXPECT_TRUE(waitUntil([&] { return inState("lastHealthyVersion") == version; }));
        EXPECT_EQ(runningVersion(), version);
        // The worker may still be removing the version before the one before.
        EXPECT_TRUE(
            waitUntil([&] { return !QFile::exists(storePath(QStringLiteral("staging"))); }));
    }

    const QString kToolFailure =
        QStringLiteral("Runtime update failed: ditto failed to extract runtime archive.");
};

TEST_F(TrayArchive, AWrappedRuntimeIsInstalledWithoutItsWrapper) {
    channel.makeRuntime(QStringLiteral("wrapped/orvanta runtime"), QStringLiteral("1.1.0"));
    ASSERT_TRUE(QFile::copy(QStringLiteral(ORVANTA_PUBLISH_SCRIPT),
                            channel.path(QStringLiteral("wrapped/NOTES"))));
    startAndWaitForConnector();
    expectInstalled(QStringLiteral("1.1.0"),
                    channel.archiveOf(channel.path(QStringLiteral("wrapped"))));
    QFile metadata(storePath(QStringLiteral("versions/1.1.0/runtime.json")));
    ASSERT_TRUE(metadata.open(QIODevice::ReadOnly));
    EXPECT_EQ(QJsonDocument::fromJson(metadata.readAll()).object().value(QStringLiteral("version")),
              QJsonValue(QStringLiteral("1.1.0")));
}

TEST_F(TrayArchive, OfTwoWrappersTheCompleteOneIsInstalled) {
    startAndWaitForConnector();
    for (const auto& [version, broken] :
         {std::pair("1.1.0", "first"), std::pair("1.2.0", "second")}) {
        expectInstalled(QLatin1String(version),
                        archiveWithTwoWrappers(QLatin1String(version), QLatin1String(broken)));
        ASSERT_TRUE(waitForLine(QStringLiteral("13  Rollback Runtime")));
    }
}

TEST_F(TrayArchive, AWrapperThatRefersToItsNeighbourIsRefused) {
    channel.makeRuntime(QStringLiteral("linked/runtime"), QStringLiteral("1.1.0"));
    const QString node = QStringLiteral("linked/runtime/node-runtime/node");
    ASSERT_TRUE(QDir().mkpath(channel.path(QStringLiteral("linked/shared"))));
    ASSERT_TRUE(
        QFile::rename(channel.path(node), channel.path(QStringLiteral("linked/shared/node"))));
    ASSERT_TRUE(QFile::link(QStringLiteral("../../shared/node"), channel.path(node)));
    startAndWaitForConnector();
    expectRefused(channel.archiveOf(channel.path(QStringLiteral("linked"))), kToolFailure);
}

TEST_F(TrayArchive, AnArchiveWithoutBytesIsRefused) {
    startAndWaitForConnector();
    expectRefused({}, kToolFailure);
}

TEST_F(TrayArchive, AnArchiveOfAnotherKindIsRefused) {
    ASSERT_FALSE(channel.makeRuntime(QStringLiteral("plain"), QStringLiteral("1.1.0")).isEmpty());
    startAndWaitForConnector();
    expectRefused(channel.archiveOf(channel.path(QStringLiteral("plain")), QStringLiteral("ustar")),
                  kToolFailure);
}

TEST_F(TrayArchive, ATextInPlaceOfAnArchiveIsRefused) {
    startAndWaitForConnector();
    expectRefused("<html><title>Sign in to this network</title></html>\n", kToolFailure);
}

TEST_F(TrayArchive, AnArchiveOfSomethingElseIsRefusedAndTheNextOneInstalled) {
    startAndWaitForConnector();
    channel.makeRuntime(QStringLiteral("half"), QStringLiteral("1.1.0"));
    ASSERT_TRUE(QDir(channel.path(QStringLiteral("half/node-runtime"))).removeRecursively());
    expectRefused(
        channel.archiveOf(channel.path(QStringLiteral("half"))),
        QStringLiteral("Runtime archive does not contain local-server and node-runtime."));
    channel.makeRuntime(QStringLiteral("whole"), QStringLiteral("1.1.1"));
    expectInstalled(QStringLiteral("1.1.1"),
                    channel.archiveOf(channel.path(QStringLiteral("whole"))));
}

} // namespace orvanta::tests
