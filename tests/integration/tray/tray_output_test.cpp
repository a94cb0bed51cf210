// SPDX-License-Identifier: MIT
#include "integration/tray/tray_process.h"

#include <QElapsedTimer>

#include <csignal>

namespace orvanta::tests {

using TrayOutput = TrayTest;

TEST_F(TrayOutput, AnAnnouncementOnStandardErrorCounts) {
    switches.insert(QStringLiteral("announceStream"), QStringLiteral("stderr"));
    startAndWaitForConnector();
    EXPECT_TRUE(waitForLine(QStringLiteral("Status: Not Paired")));
}

TEST_F(TrayOutput, TheConnectorsOutputIsNotShown) {
    startAndWaitForConnector();
    ASSERT_TRUE(waitForLine(QStringLiteral("Status: Not Paired")));
    ASSERT_TRUE(connector().post(QStringLiteral("/demo/print"), "a secret line\n"));
    ASSERT_TRUE(connector().post(QStringLiteral("/demo/crash?code=1")));
    ASSERT_TRUE(waitForLine(QStringLiteral("Orvanta server exited with status 1")));
    EXPECT_FALSE(lines().contains(QStringLiteral("a secret line")));
}

TEST_F(TrayOutput, AGibibyteWithoutALineEndCostsNoMemoryAndTheMenuGoesOnAnswering) {
    startAndWaitForConnector();
    ASSERT_TRUE(waitForLine(QStringLiteral("Status: Not Paired")));
    const std::size_t before = residentKiB(trayPid());
    const int port = connectorPort();
    // The reply comes when all has been written; the switch board answers others meanwhile.
    QProcess flood;
    flood.start(
        QStringLiteral(ORVANTA_STAGED_RESOURCES "/node-runtime/node"),
        {QStringLiteral("-e"), QStringLiteral("require('http').request({port:%1,method:'POST',path:"
                                              "'/demo/print?repeat=1024'},r=>{r.resume();"
                                              "process.exit(r.statusCode===200?0:1)})"
                                              ".end(Buffer.alloc(1048576,120))")
                                   .arg(port)});
    ASSERT_TRUE(flood.waitForStarted());
    std::size_t highest = before;
    qint64 slowest = 0;
    while (flood.state() != QProcess::NotRunning) {
        const auto printed = lines().size();
        QElapsedTimer elapsed;
        elapsed.start();
        type(QStringLiteral("nonsense"));
        ASSERT_TRUE(waitUntil([&] { return lines().size() > printed; }, 5'000));
        slowest = std::max(slowest, elapsed.elapsed());
        highest = std::max(highest, residentKiB(trayPid()));
        flood.waitForFinished(50);
    }
    EXPECT_EQ(flood.exitCode(), 0);
    RecordProperty("slowest_answer_ms", static_cast<int>(slowest));
    RecordProperty("growth_kib", static_cast<int>(highest - before));
    EXPECT_LT(highest - before, 16U * 1024U);
    EXPECT_LT(slowest, 1'000);
    EXPECT_EQ(starts(), 1);
}

TEST_F(TrayOutput, AConnectorThatClosesItsOutputLivesOn) {
    startAndWaitForConnector();
    const int pid = connectorPid();
    ASSERT_TRUE(connector().post(QStringLiteral("/demo/close-output")));
    type(QStringLiteral("6"));
    ASSERT_TRUE(waitForLine(QStringLiteral("Status: Online")));
    EXPECT_EQ(childrenOf(trayPid()), std::vector<pid_t>{pid});
    ::kill(pid, SIGKILL);
    EXPECT_TRUE(waitForNewConnector(pid));
}

TEST_F(TrayOutput, AGrandchildThatKeepsThePipesDoesNotHideTheExit) {
    startAndWaitForConnector();
    const int first = connectorPid();
    ASSERT_TRUE(connector().post(QStringLiteral("/demo/grandchild?seconds=20")));
    ASSERT_TRUE(connector().post(QStringLiteral("/demo/crash?code=4")));
    EXPECT_TRUE(waitForNewConnector(first, 8'000));
    EXPECT_TRUE(lines().contains(QStringLiteral("Orvanta server exited with status 4")));
}

} // namespace orvanta::tests
