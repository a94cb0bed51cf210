// SPDX-License-Identifier: MIT
#include "integration/tray/tray_process.h"

namespace orvanta::tests {

using TrayCommands = TrayTest;

TEST_F(TrayCommands, PairingTurnsNotPairedIntoOnlineAndSigningOutTurnsItBack) {
    startAndWaitForConnector();
    ASSERT_TRUE(waitForLine(QStringLiteral("Status: Not Paired")));
    type(QStringLiteral("6"));
    ASSERT_TRUE(waitForLine(QStringLiteral("Status: Online")));
    type(QStringLiteral("7"));
    EXPECT_TRUE(waitUntil([this] {
        return lastLine(QStringLiteral("Status:")) == QStringLiteral("Status: Not Paired");
    }));
    const QJsonObject counts = connector().get(QStringLiteral("/demo/requests"));
    EXPECT_EQ(counts.value(QStringLiteral("POST /api/ov/pair/start")).toInt(), 1);
    EXPECT_EQ(counts.value(QStringLiteral("POST /api/ov/logout?unpair=1")).toInt(), 1);
}

TEST_F(TrayCommands, ACommandThatGetsNoReplyReachesTheConnectorOnce) {
    startAndWaitForConnector();
    ASSERT_TRUE(waitForLine(QStringLiteral("Status: Not Paired")));
    ASSERT_TRUE(connector().post(QStringLiteral("/demo/abort?what=pair")));
    type(QStringLiteral("Sign In / Pair"));
    ASSERT_TRUE(
        waitForLine(QStringLiteral("Could not reach the Desktop Connector to start pairing.")));
    EXPECT_EQ(connector()
                  .get(QStringLiteral("/demo/requests"))
                  .value(QStringLiteral("POST /api/ov/pair/start"))
                  .toInt(),
              1);
}

TEST_F(TrayCommands, ARedirectOfACommandIsNotFollowed) {
    startAndWaitForConnector();
    ASSERT_TRUE(waitForLine(QStringLiteral("Status: Not Paired")));
    ASSERT_TRUE(connector().post(
        QStringLiteral("/demo/status-code?value=302&what=pair&location=/api/ov/logout")));
    type(QStringLiteral("Sign In / Pair"));
    ASSERT_TRUE(
        waitForLine(QStringLiteral("Could not reach the Desktop Connector to start pairing.")));
    const QJsonObject counts = connector().get(QStringLiteral("/demo/requests"));
    EXPECT_EQ(counts.value(QStringLiteral("POST /api/ov/pair/start")).toInt(), 1);
    EXPECT_FALSE(counts.contains(QStringLiteral("POST /api/ov/logout")));
    EXPECT_FALSE(counts.contains(QStringLiteral("GET /api/ov/logout")));
}

TEST_F(TrayCommands, AProxyInTheEnvironmentIsIgnoredTowardsTheConnector) {
    for (const char* name : {"http_proxy", "HTTP_PROXY", "all_proxy", "ALL_PROXY"}) {
        environment.insert(QString::fromLatin1(name), QStringLiteral("http://127.0.0.1:9"));
    }
    startAndWaitForConnector();
    EXPECT_TRUE(waitForLine(QStringLiteral("Status: Not Paired")));
}

TEST_F(TrayCommands, AHungStatusBesideAHealthyHealthChangesNothing) {
    writeStateFile(QStringLiteral("config.json"),
                   R"({"tray":{"statusPollIntervalSeconds":0.2,"httpTimeoutSeconds":0.3,
                       "httpResourceTimeoutSeconds":0.5}})");
    startAndWaitForConnector();
    type(QStringLiteral("6"));
    ASSERT_TRUE(waitForLine(QStringLiteral("Status: Online")));
    ASSERT_TRUE(connector().post(QStringLiteral("/demo/hang?what=status&on=1")));
    const int before = static_cast<int>(lines().size());
    const auto healthRequests = [this] {
        return connector()
            .get(QStringLiteral("/demo/requests"))
            .value(QStringLiteral("GET /api/ov/health"))
            .toInt();
    };
    ASSERT_TRUE(waitUntil([&] { return healthRequests() >= 5; }));
    EXPECT_EQ(lastLine(QStringLiteral("Status:")), QStringLiteral("Status: Online"));
    EXPECT_EQ(lines().size(), before);

    ASSERT_TRUE(connector().post(QStringLiteral("/demo/hang?what=health&on=1")));
    EXPECT_TRUE(waitUntil([this] {
        return lastLine(QStringLiteral("Status:")) == QStringLiteral("Status: Offline");
    }));
    EXPECT_EQ(starts(), 1);
}

TEST_F(TrayCommands, WhatCannotBeRunIsAnsweredWithOneLine) {
    startAndWaitForConnector();
    ASSERT_TRUE(waitForLine(QStringLiteral("Status: Not Paired")));
    for (const char* nonsense : {"dance", "7", "1", "99", "-5", "Sign Out"}) {
        const auto before = lines().size();
        type(QString::fromLatin1(nonsense));
        EXPECT_TRUE(waitUntil([&] { return lines().size() > before; }, 3'000)) << nonsense;
        EXPECT_EQ(lines().size(), before + 1) << nonsense;
    }
    EXPECT_TRUE(connector().answers());
}

TEST_F(TrayCommands, TheEndOfStandardInputLeavesTheTrayRunning) {
    startAndWaitForConnector();
    const int first = connectorPid();
    tray.closeWriteChannel();
    ASSERT_TRUE(connector().post(QStringLiteral("/demo/crash?code=1")));
    EXPECT_TRUE(waitForNewConnector(first));
}

} // namespace orvanta::tests
