// SPDX-License-Identifier: MIT
#include "integration/tray/small_disk.h"
#include "integration/tray/small_installation.h"

#include <QFile>

#include <csignal>

namespace orvanta::tests {
namespace {

/// What can happen to a disk, and what the system calls it.
struct Trouble {
    const char* name;
    bool (*begin)(const SmallDisk&);
    bool (*end)(const SmallDisk&);
    const char* reason;
};

const Trouble kFull{"Full", [](const SmallDisk& disk) { return disk.fill(); },
                    [](const SmallDisk& disk) { return disk.makeRoom(); },
                    "No space left on device"};
const Trouble kReadOnly{"ReadOnly", [](const SmallDisk& disk) { return disk.setReadOnly(true); },
                        [](const SmallDisk& disk) { return disk.setReadOnly(false); },
                        "Read-only file system"};

/// The state root is a disk of its own.
class TrayStateRoot : public SmallInstallation, public ::testing::WithParamInterface<Trouble> {
protected:
    void SetUp() override {
        SmallInstallation::SetUp();
        const QString problem = disk.mount();
        if (!problem.isEmpty()) {
            GTEST_SKIP() << problem.toStdString();
        }
        follow(channel.baseUrl());
    }

    bool begin() const { return GetParam().begin(disk); }
    bool end() const { return GetParam().end(disk); }
    QString reason() const { return QLatin1String(GetParam().reason) + QLatin1Char('.'); }

    SmallDisk disk{stateRoot()};
};

} // namespace

TEST_P(TrayStateRoot, AFirstStartThatCannotWriteSaysWhyAndTheNextOneWorks) {
    ASSERT_TRUE(QFile::remove(stateRoot() + QStringLiteral("/config.json")));
    // What `startTray` writes is written before.
    startTray({QStringLiteral("--version")});
    ASSERT_EQ(waitForExit(), 0);
    ASSERT_TRUE(begin());
    tray.start(executable, {QStringLiteral("--terminal")});
    EXPECT_TRUE(waitForLine(QStringLiteral("“%1/local-server/config.installer.json” could not be "
                                           "copied to “%2/config.json”: %3")
                                .arg(resources(), stateRoot(), reason())))
        << said();
    pauseFor(1'500);
    EXPECT_TRUE(childrenOf(trayPid()).empty());
    ASSERT_TRUE(end());
    tray.terminate();
    ASSERT_EQ(waitForExit(), 0);

    EXPECT_FALSE(QFile::exists(stateRoot() + QStringLiteral("/config.json")));
    // What ships would ask a server far away.
    follow(channel.baseUrl());
    startAndWaitForConnector();
    EXPECT_TRUE(waitForStatus(QStringLiteral("Not Paired"))) << said();
}

TEST_P(TrayStateRoot, AStoreThatCannotBeSeededIsSeededByALaterRestart) {
    startTray({QStringLiteral("--version")});
    ASSERT_EQ(waitForExit(), 0);
    ASSERT_TRUE(begin());
    tray.start(executable, {QStringLiteral("--terminal")});
    ASSERT_TRUE(waitUntil([this] {
        return runtimeLine().startsWith(
                   QStringLiteral("Runtime: Could not seed the runtime store: ")) &&
               runtimeLine().endsWith(reason());
    })) << said();
    const QString problem = runtimeLine().section(QStringLiteral("store: "), 1);
    // Another work directory, but the same sentence.
    EXPECT_FALSE(lastLine(problem.section(QStringLiteral("/staging/"), 0, 0)).isEmpty()) << said();
    EXPECT_TRUE(childrenOf(trayPid()).empty());
    ASSERT_TRUE(end());
    type(QStringLiteral("Restart"));
    EXPECT_TRUE(waitUntil([this] { return connectorPort() > 0 && connector().answers(); }))
        << said();
    EXPECT_TRUE(waitForStatus(QStringLiteral("Not Paired"))) << said();
    EXPECT_EQ(inState("currentVersion"), QStringLiteral("1.0.0"));
}

TEST_P(TrayStateRoot, ARunningTrayGoesOnAndAnUpdateSaysWhyItFailed) {
    startAndSettle();
    const int first = connectorPid();
    ASSERT_TRUE(begin());
    type(QStringLiteral("Update Desktop Connector"));
    ASSERT_TRUE(waitUntil([this] {
        return runtimeLine().startsWith(QStringLiteral("Runtime: Runtime update failed: ")) &&
               runtimeLine().endsWith(reason());
    })) << said();
    EXPECT_NE(lastLine(QStringLiteral("Runtime update failed: ")), QString());
    EXPECT_EQ(inState("currentVersion"), QStringLiteral("1.0.0"));

    // The demo connector ends when it cannot write its journal, so it may be launched many times.
    for (const pid_t child : childrenOf(trayPid())) {
        ::kill(child, SIGKILL);
    }
    EXPECT_TRUE(waitForNewChild(first)) << said();
    ASSERT_TRUE(end());
    EXPECT_TRUE(waitForNewConnector(first)) << said();
    EXPECT_TRUE(waitForStatus(QStringLiteral("Not Paired"))) << said();
    type(QStringLiteral("Update Desktop Connector"));
    EXPECT_TRUE(waitForRuntimeLine(QStringLiteral("Updated to 1.1.0"))) << said();
    EXPECT_TRUE(waitForRunningVersion(QStringLiteral("1.1.0")));
    EXPECT_FALSE(QFile::exists(storePath(QStringLiteral("staging"))));
}

TEST_P(TrayStateRoot, ATrayKilledMeanwhileFindsItsStoreAgain) {
    startAndSettle();
    ASSERT_TRUE(
        waitUntil([this] { return inState("lastHealthyVersion") == QStringLiteral("1.0.0"); }));
    tray.terminate();
    ASSERT_EQ(waitForExit(), 0);
    // So long that it cannot be replaced without room for another one.
    const QByteArray record = QJsonDocument(currentState()).toJson() + QByteArray(8'192, ' ');
    writeStateFile(QStringLiteral("runtime/current.json"), record);
    ASSERT_TRUE(begin());
    tray.start(executable, {QStringLiteral("--terminal")});
    ASSERT_TRUE(waitUntil([this] { return !childrenOf(trayPid()).empty(); })) << said();
    // Long enough for a few confirmations, where the demo connector comes up.
    pauseFor(2'000);
    const std::vector<pid_t> orphans = childrenOf(trayPid());
    tray.kill();
    ASSERT_TRUE(tray.waitForFinished());
    for (const pid_t orphan : orphans) {
        ::kill(orphan, SIGKILL);
    }
    ASSERT_TRUE(end());
    QFile file(storePath(QStringLiteral("current.json")));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), record);

    const int before = connectorPid();
    startTray();
    EXPECT_TRUE(waitForNewConnector(before)) << said();
    EXPECT_EQ(runningVersion(), QStringLiteral("1.0.0"));
}

INSTANTIATE_TEST_SUITE_P(Disk, TrayStateRoot, ::testing::Values(kFull, kReadOnly),
                         [](const auto& trouble) { return std::string(trouble.param.name); });

using TrayVanishedRoot = SmallInstallation;

TEST_F(TrayVanishedRoot, IsMadeAnewByTheNextLaunch) {
    // Without its configuration the tray asks for manifests where it does by default.
    for (const char* name : {"https_proxy", "http_proxy"}) {
        environment.insert(QLatin1String(name), QStringLiteral("http://127.0.0.1:9"));
    }
    startAndSettle();
    const int first = connectorPid();
    const QString settled = QStringLiteral("Status: Not Paired");
    const auto before = lines().count(settled);
    ASSERT_TRUE(QDir().rename(stateRoot(), home.filePath(QStringLiteral("elsewhere"))));
    // The demo connector ends by itself as soon as it cannot write its journal.
    ASSERT_TRUE(waitForNewChild(first)) << said();
    EXPECT_TRUE(waitUntil([&] { return lines().count(settled) > before; })) << said();
    EXPECT_EQ(inState("currentVersion"), QStringLiteral("1.0.0"));
    EXPECT_EQ(versions(), QStringList{QStringLiteral("1.0.0")});
}

} // namespace orvanta::tests
