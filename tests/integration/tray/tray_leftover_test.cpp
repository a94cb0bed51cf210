// SPDX-License-Identifier: MIT
#include "integration/tray/tray_process.h"

#include <QFile>

#include <csignal>
#include <random>
#include <sys/stat.h>

namespace orvanta::tests {
namespace {

/// As the tray remembers a child.
QByteArray pidFileLine(pid_t pid) {
    constexpr int kStartTime = 20;
    QFile file(QStringLiteral("/proc/%1/stat").arg(pid));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray line = file.readAll();
    const QByteArray time = line.mid(line.lastIndexOf(')') + 1).split(' ').value(kStartTime);
    struct stat executable {};
    ::stat(("/proc/" + std::to_string(pid) + "/exe").c_str(), &executable);
    return QByteArray::number(pid) + ' ' + time + ' ' +
           QByteArray::number(static_cast<qulonglong>(executable.st_dev)) + ' ' +
           QByteArray::number(static_cast<qulonglong>(executable.st_ino)) + '\n';
}

class TrayLeftover : public TrayTest {
protected:
    void killTray() {
        tray.kill();
        ASSERT_TRUE(tray.waitForFinished(5'000));
    }

    void pauseFor(int ms) {
        waitUntil([] { return false; }, ms);
    }

    /// All connectors of this state root that still run.
    std::vector<pid_t> connectors() const {
        std::vector<pid_t> running;
        for (const QJsonObject& start : journal(QStringLiteral("start"))) {
            const pid_t pid = start.value(QStringLiteral("pid")).toInt();
            if (isAlive(pid)) {
                running.push_back(pid);
            }
        }
        return running;
    }

    QString pidFilePath() const {
        return home.filePath(QStringLiteral("run/orvanta-tray.children"));
    }
};

} // namespace

TEST_F(TrayLeftover, AfterAHundredKilledTraysOneConnectorRuns) {
    constexpr int kKills = 100;
    constexpr int kLongestLifeMs = 300;
    std::mt19937 random(20261121);
    for (int i = 1; i <= kKills; ++i) {
        const int started = starts();
        startTray();
        const bool isComplete = i % 2 == 0;
        if (isComplete) {
            ASSERT_TRUE(waitUntil([&] { return starts() > started; })) << "kill " << i;
        }
        const int life = static_cast<int>(random() % (isComplete ? 10 : kLongestLifeMs));
        pauseFor(life);
        killTray();
        ASSERT_LE(connectors().size(), 2U) << "kill " << i << " after " << life << " ms";
    }
    const int before = connectorPid();
    startTray();
    ASSERT_TRUE(waitForNewConnector(before));
    EXPECT_TRUE(waitUntil([this] { return connectors() == childrenOf(trayPid()); }));
    EXPECT_EQ(connectors(), std::vector<pid_t>{connectorPid()});
    RecordProperty("connectors_started", starts());
}

TEST_F(TrayLeftover, OneThatIsAdoptedGetsNoSignal) {
    QProcess byHand;
    QProcessEnvironment variables = environment;
    variables.insert(QStringLiteral("PORT"), QStringLiteral("3000"));
    variables.insert(QStringLiteral("ORVANTA_STATE_ROOT"), stateRoot());
    byHand.setProcessEnvironment(variables);
    byHand.start(QStringLiteral(ORVANTA_STAGED_RESOURCES "/node-runtime/node"),
                 {QStringLiteral(ORVANTA_STAGED_RESOURCES "/local-server/server.js")});
    ASSERT_TRUE(waitUntil([] { return ConnectorClient(3000).answers(); }));
    const auto pid = static_cast<pid_t>(byHand.processId());
    QFile pidFile(pidFilePath());
    ASSERT_TRUE(pidFile.open(QIODevice::WriteOnly));
    pidFile.write(pidFileLine(pid));
    pidFile.close();

    startTray();
    ASSERT_TRUE(waitForLine(QStringLiteral("Status: Not Paired")));
    pauseFor(500);
    EXPECT_TRUE(isAlive(pid));
    EXPECT_TRUE(childrenOf(trayPid()).empty());
    byHand.kill();
    byHand.waitForFinished();
}

TEST_F(TrayLeftover, NothingIsRememberedAfterQuit) {
    startAndWaitForConnector();
    EXPECT_TRUE(QFile::exists(pidFilePath()));
    type(QStringLiteral("Quit"));
    EXPECT_EQ(waitForExit(), 0);
    EXPECT_FALSE(QFile::exists(pidFilePath()));
    EXPECT_FALSE(QFile::exists(stateRoot() + QStringLiteral("/orvanta-tray.children")));
}

} // namespace orvanta::tests
