// SPDX-License-Identifier: MIT
#include "integration/tray/tray_update.h"

#include <QElapsedTimer>

namespace orvanta::tests {

/// Version 1.1.0 is offered to a tray that runs, over a network that the test disturbs.
class TrayTransfer : public TrayUpdate {
protected:
    void startAndPublish() {
        startAndWaitForConnector();
        m_connector = connectorPid();
        ASSERT_TRUE(channel.publish(kOffered));
    }

    /// Updates; the two lines of the menu must say `message`, and nothing else may happen.
    void expectFailure(const QString& message) {
        ASSERT_TRUE(checkAndUpdateTo(kOffered));
        EXPECT_TRUE(waitForRuntimeLine(message)) << runtimeLine().toStdString();
        EXPECT_TRUE(waitForLine(message));
        EXPECT_EQ(versions(), QStringList{QStringLiteral("1.0.0")});
        EXPECT_TRUE(QDir(storePath(QStringLiteral("staging"))).isEmpty());
        EXPECT_EQ(connectorPid(), m_connector);
    }

    void expectInstalled() {
        ASSERT_TRUE(checkAndUpdateTo(kOffered));
        EXPECT_TRUE(waitForRuntimeLine(QStringLiteral("Updated to 1.1.0")))
            << runtimeLine().toStdString();
        EXPECT_TRUE(waitForRunningVersion(kOffered));
    }

    const QString kOffered = QStringLiteral("1.1.0");
    const QString kChecksum =
        QStringLiteral("Runtime archive checksum did not match the manifest.");
    int m_connector = 0;
};

TEST_F(TrayTransfer, RedirectsOfManifestAndArchiveAreFollowed) {
    follow(channel.baseUrl() + QStringLiteral("/moved"));
    startAndPublish();
    channel.disturbArchive(QStringLiteral("moved"));
    expectInstalled();
}

TEST_F(TrayTransfer, AnArchiveThatIsNotThereFailsTheCheckOfItsDigest) {
    startAndPublish();
    channel.disturbArchive(QStringLiteral("nowhere"));
    expectFailure(kChecksum);
}

TEST_F(TrayTransfer, AnArchiveWithAnotherDigestIsNotInstalled) {
    startAndPublish();
    QString digest = channel.manifest().value(QStringLiteral("sha256")).toString();
    digest[63] = digest[63] == u'0' ? u'1' : u'0';
    channel.setInManifest(QStringLiteral("sha256"), digest);
    expectFailure(kChecksum);
}

TEST_F(TrayTransfer, ATransferThatIsCutFailsWithItsReason) {
    startAndPublish();
    channel.disturbArchive(QStringLiteral("cut"));
    const qint64 size = channel.archiveSize();
    expectFailure(QStringLiteral("Runtime update failed: The exchange with the server at %1 "
                                 "failed: transfer closed with %2 bytes remaining to read.")
                      .arg(channel.baseUrl().section(u'/', 2))
                      .arg(size - size / 2));
}

TEST_F(TrayTransfer, ASlowTransferIsAwaitedWhileTheStatusIsPolled) {
    startAndPublish();
    channel.disturbArchive(QStringLiteral("slow"));
    ASSERT_TRUE(checkAndUpdateTo(kOffered));
    ASSERT_TRUE(waitForRuntimeLine(QStringLiteral("Updating...")));
    const auto requests = journal(QStringLiteral("request")).size();
    QElapsedTimer clock;
    clock.start();
    ASSERT_TRUE(waitForRuntimeLine(QStringLiteral("Updated to 1.1.0")));
    EXPECT_GT(clock.elapsed(), 1500);
    EXPECT_GE(journal(QStringLiteral("request")).size(), requests + 5);
    EXPECT_TRUE(waitForRunningVersion(kOffered));
}

} // namespace orvanta::tests
