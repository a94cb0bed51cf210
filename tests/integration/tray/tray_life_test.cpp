// SPDX-License-Identifier: MIT
#include "integration/tray/tray_process.h"

#include <QElapsedTimer>
#include <QFile>

#include <csignal>

namespace orvanta::tests {

using TrayLife = TrayTest;

TEST_F(TrayLife, AFirstStartCopiesTheTemplateAndShowsNotPaired) {
    QFile::remove(stateRoot() + QStringLiteral("/config.json"));
    startAndWaitForConnector();
    EXPECT_TRUE(waitForLine(QStringLiteral("Status: Not Paired")));
    QFile made(stateRoot() + QStringLiteral("/config.json"));
    QFile shipped(QStringLiteral(ORVANTA_STAGED_RESOURCES "/local-server/config.installer.json"));
    ASSERT_TRUE(made.open(QIODevice::ReadOnly));
    ASSERT_TRUE(shipped.open(QIODevice::ReadOnly));
    EXPECT_EQ(made.readAll(), shipped.readAll());
}

TEST_F(TrayLife, AKilledConnectorIsReplacedByOneThatAnswers) {
    startAndWaitForConnector();
    ASSERT_TRUE(waitForLine(QStringLiteral("Status: Not Paired")));
    const int first = connectorPid();
    ASSERT_EQ(childrenOf(trayPid()), std::vector<pid_t>{first});
    ::kill(first, SIGKILL);
    ASSERT_TRUE(waitForNewConnector(first));
    EXPECT_TRUE(lines().contains(QStringLiteral("Orvanta server exited with status 9")));
    EXPECT_EQ(childrenOf(trayPid()), std::vector<pid_t>{connectorPid()});
    EXPECT_EQ(starts(), 2);
    EXPECT_TRUE(waitUntil([this] {
        return lastLine(QStringLiteral("Status:")) == QStringLiteral("Status: Not Paired");
    }));
}

TEST_F(TrayLife, ACrashIsHealedLikeACleanExit) {
    startAndWaitForConnector();
    for (const char* code : {"0", "3"}) {
        const int before = connectorPid();
        ASSERT_TRUE(connector().post(QStringLiteral("/demo/crash?code=") + QLatin1String(code)));
        ASSERT_TRUE(waitForNewConnector(before));
        EXPECT_TRUE(lines().contains(QStringLiteral("Orvanta server exited with status ") +
                                     QLatin1String(code)));
    }
}

class TraySignals : public TrayTest, public ::testing::WithParamInterface<int> {};

TEST_P(TraySignals, EndTheTrayAtOnceAndTheConnectorWithIt) {
    startAndWaitForConnector();
    const pid_t child = connectorPid();
    QElapsedTimer elapsed;
    elapsed.start();
    ::kill(trayPid(), GetParam());
    EXPECT_EQ(waitForExit(), 0);
    EXPECT_LT(elapsed.elapsed(), 2'000);
    EXPECT_TRUE(waitUntil([&] { return !isAlive(child); }));
    EXPECT_EQ(starts(), 1);
}

INSTANTIATE_TEST_SUITE_P(Quit, TraySignals, ::testing::Values(SIGTERM, SIGINT, SIGHUP));

TEST_F(TrayLife, QuittingDoesNotWaitForASlowConnector) {
    switches.insert(QStringLiteral("exitDelayMs"), 3'000);
    startAndWaitForConnector();
    const pid_t child = connectorPid();
    QElapsedTimer elapsed;
    elapsed.start();
    type(QStringLiteral("Quit"));
    EXPECT_EQ(waitForExit(2'500), 0);
    EXPECT_LT(elapsed.elapsed(), 2'000);
    EXPECT_TRUE(isAlive(child));
    EXPECT_TRUE(waitUntil([&] { return !isAlive(child); }));
}

TEST_F(TrayLife, ASecondInstanceSaysSoAndTheFirstGoesOn) {
    startAndWaitForConnector();
    QProcess second;
    second.setProcessEnvironment(environment);
    second.start(executable, {QStringLiteral("--terminal")});
    ASSERT_TRUE(second.waitForFinished());
    EXPECT_EQ(second.exitCode(), 0);
    EXPECT_EQ(second.readAllStandardOutput(), "Orvanta is already running.\n");
    EXPECT_EQ(starts(), 1);
    EXPECT_TRUE(connector().answers());
}

TEST_F(TrayLife, TheLockOfAKilledTrayHoldsNobodyUp) {
    startAndWaitForConnector();
    const pid_t orphan = connectorPid();
    tray.kill();
    ASSERT_TRUE(tray.waitForFinished());
    ::kill(orphan, SIGKILL);
    startTray();
    EXPECT_TRUE(waitForNewConnector(orphan));
}

TEST_F(TrayLife, TheConnectorIsToldWhereItsRuntimeAndStateAre) {
    environment.insert(QStringLiteral("ORVANTA_TEST_MARK"), QStringLiteral("kept"));
    startAndWaitForConnector();
    const QJsonObject told = connector().get(QStringLiteral("/demo/environment"));
    const auto value = [&told](const char* name) {
        return told.value(QLatin1String(name)).toString();
    };
    EXPECT_EQ(value("PORT"), QStringLiteral("0"));
    EXPECT_EQ(value("HOST"), QStringLiteral("127.0.0.1"));
    EXPECT_EQ(value("ORVANTA_RUNTIME_ROOT"),
              QStringLiteral(ORVANTA_STAGED_RESOURCES "/local-server"));
    EXPECT_EQ(value("ORVANTA_NODE_PATH"),
              QStringLiteral(ORVANTA_STAGED_RESOURCES "/node-runtime/node"));
    EXPECT_EQ(value("ORVANTA_STATE_ROOT"), stateRoot());
    EXPECT_EQ(value("ORVANTA_TEST_MARK"), QStringLiteral("kept"));
    EXPECT_TRUE(value("ORVANTA_HOST_CONTROL_URL").startsWith(QStringLiteral("http://127.0.0.1:")));
}

} // namespace orvanta::tests
