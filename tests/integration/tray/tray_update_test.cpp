// SPDX-License-Identifier: MIT
#include "integration/tray/copied_tray.h"
#include "integration/tray/tray_update.h"

#include <QFile>

namespace orvanta::tests {

namespace {

const QString kShipped = QStringLiteral("1.0.0");

} // namespace

TEST_F(TrayUpdate, AFirstStartSeedsTheStoreFromTheShippedRuntime) {
    startAndWaitForConnector();
    EXPECT_EQ(runningVersion(), kShipped);
    EXPECT_EQ(versions(), QStringList{kShipped});
    EXPECT_EQ(inState("currentVersion"), kShipped);
    EXPECT_TRUE(waitForRuntimeLine(QStringLiteral("Runtime manifest was not available.")));
}

TEST_F(TrayUpdate, AnUpdateIsCheckedInstalledConfirmedAndRolledBack) {
    startAndWaitForConnector();
    ASSERT_TRUE(channel.publish(QStringLiteral("1.1.0")));
    ASSERT_TRUE(checkAndUpdateTo(QStringLiteral("1.1.0")));
    ASSERT_TRUE(waitForRuntimeLine(QStringLiteral("Updated to 1.1.0")));
    EXPECT_TRUE(waitForRunningVersion(QStringLiteral("1.1.0")));
    EXPECT_TRUE(
        waitUntil([this] { return inState("lastHealthyVersion") == QStringLiteral("1.1.0"); }));
    EXPECT_EQ(currentState().value(QStringLiteral("pendingHealthCheck")), QJsonValue(false));
    EXPECT_EQ(versions(), (QStringList{kShipped, QStringLiteral("1.1.0")}));
    EXPECT_EQ(connector().get(QStringLiteral("/demo/environment")).value(QStringLiteral("version")),
              QJsonValue(QStringLiteral("1.1.0")));

    // The update is over when the command can be chosen: once, since a second rollback undoes it.
    ASSERT_TRUE(waitForLine(QStringLiteral("13  Rollback Runtime")));
    type(QStringLiteral("13"));
    ASSERT_TRUE(waitForRuntimeLine(QStringLiteral("Rolled back to 1.0.0.")));
    EXPECT_TRUE(waitForRunningVersion(kShipped));
    EXPECT_TRUE(waitUntil([this] { return connector().answers(); }));
}

TEST_F(TrayUpdate, AVersionThatNeverComesUpIsRolledBackByItself) {
    startAndWaitForConnector();
    ASSERT_TRUE(channel.publish(QStringLiteral("3.0.0"), {QStringLiteral("--never-healthy")}));
    ASSERT_TRUE(checkAndUpdateTo(QStringLiteral("3.0.0")));
    ASSERT_TRUE(waitForRuntimeLine(QStringLiteral("Rolled back to 1.0.0."), 60'000));
    EXPECT_TRUE(waitUntil([this] { return connector().answers(); }));
    EXPECT_EQ(runningVersion(), kShipped);
    EXPECT_EQ(inState("currentVersion"), kShipped);
    EXPECT_EQ(inState("previousVersion"), QStringLiteral("3.0.0"));
}

TEST_F(TrayUpdate, AMandatoryVersionIsInstalledBeforeTheConnectorStarts) {
    ASSERT_TRUE(channel.publish(QStringLiteral("2.0.0"), {}, QStringLiteral("2.0.0")));
    startAndWaitForConnector();
    EXPECT_EQ(starts(), 1);
    EXPECT_EQ(runningVersion(), QStringLiteral("2.0.0"));
    EXPECT_TRUE(waitUntil([this] {
        return currentState().value(QStringLiteral("pendingHealthCheck")) == QJsonValue(false);
    }));
    EXPECT_EQ(inState("lastHealthyVersion"), QStringLiteral("2.0.0"));
}

/// The tray in an installation of its own, whose shipped runtime can be replaced.
class TrayUpdateOfApplication : public TrayUpdate {
protected:
    void SetUp() override {
        TrayUpdate::SetUp();
        executable =
            copyTray(QStringLiteral(ORVANTA_TRAY), home.filePath(QStringLiteral("prefix")));
        ASSERT_NE(executable, QString());
    }

    /// Puts the demo as `version` where the application finds what ships with it.
    void ship(const QString& version) const {
        ASSERT_FALSE(channel.makeRuntime(QStringLiteral("shipped"), version).isEmpty());
        const QString shipped = home.filePath(QStringLiteral("prefix/share/orvanta"));
        QDir(shipped).removeRecursively();
        QDir().mkpath(QFileInfo(shipped).path());
        ASSERT_TRUE(QDir().rename(channel.path(QStringLiteral("shipped")), shipped));
    }

    void startAndQuit() {
        startAndWaitForConnector();
        tray.terminate();
        ASSERT_EQ(waitForExit(), 0);
    }
};

TEST_F(TrayUpdateOfApplication, ATrayWhoseFilesAreReplacedMeanwhileStillInstalls) {
    ship(QStringLiteral("1.0.0"));
    ASSERT_TRUE(channel.publish(QStringLiteral("2.0.0")));
    startAndWaitForConnector();
    ASSERT_TRUE(waitForRuntimeLine(QStringLiteral("Update available: 2.0.0")));
    // As packages are upgraded: other files take the places of those that are open.
    const QString module =
        home.filePath(QStringLiteral("prefix/lib/orvanta-tray/modules/digest.so"));
    ASSERT_TRUE(QFile::remove(module));
    ASSERT_TRUE(QFile::copy(QStringLiteral(ORVANTA_PUBLISH_SCRIPT), module));
    type(QStringLiteral("Update Desktop Connector"));
    EXPECT_TRUE(waitForRuntimeLine(QStringLiteral("Updated to 2.0.0")));
}

TEST_F(TrayUpdateOfApplication, ANewerShippedRuntimeIsPromotedAtTheNextStart) {
    ship(QStringLiteral("1.4.0"));
    startAndQuit();
    EXPECT_EQ(runningVersion(), QStringLiteral("1.4.0"));
    ship(QStringLiteral("1.10.0"));
    startAndQuit();
    EXPECT_EQ(runningVersion(), QStringLiteral("1.10.0"));
    EXPECT_EQ(inState("currentVersion"), QStringLiteral("1.10.0"));
    EXPECT_EQ(inState("previousVersion"), QStringLiteral("1.4.0"));
    EXPECT_EQ(versions(), (QStringList{QStringLiteral("1.10.0"), QStringLiteral("1.4.0")}));
    ship(QStringLiteral("1.9.0"));
    startAndQuit();
    EXPECT_EQ(runningVersion(), QStringLiteral("1.10.0"));
    EXPECT_FALSE(versions().contains(QStringLiteral("1.9.0")));
}

TEST_F(TrayUpdateOfApplication, ARollbackFromAPromotedRuntimePromotesItAgain) {
    ship(QStringLiteral("1.4.0"));
    startAndQuit();
    ship(QStringLiteral("1.10.0"));
    startAndWaitForConnector();
    const int before = starts();
    ASSERT_TRUE(waitForLine(QStringLiteral("13  Rollback Runtime")));
    type(QStringLiteral("13"));
    ASSERT_TRUE(waitUntil([&] { return starts() > before; }));
    EXPECT_EQ(runningVersion(), QStringLiteral("1.10.0"));
    EXPECT_EQ(inState("currentVersion"), QStringLiteral("1.10.0"));
    EXPECT_EQ(inState("previousVersion"), QStringLiteral("1.4.0"));
}

} // namespace orvanta::tests
