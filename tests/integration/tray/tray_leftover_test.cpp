// SPDX-License-Identifier: MIT
#include "integration/tray/launch_watch.h"
#include "integration/tray/tray_process.h"

#include <QDirIterator>
#include <QFile>

#include <array>
#include <csignal>
#include <mutex>
#include <random>
#include <sys/stat.h>

namespace orvanta::tests {
namespace {

const QString kSettled = QStringLiteral("Status: Not Paired");

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

/// Whether the process has been sent the signal but has not taken it, being stopped.
bool hasPending(pid_t pid, int signal) {
    QFile file(QStringLiteral("/proc/%1/status").arg(pid));
    file.open(QIODevice::ReadOnly);
    for (const QByteArray& line : file.readAll().split('\n')) {
        if (line.startsWith("ShdPnd:")) {
            return ((line.mid(7).trimmed().toULongLong(nullptr, 16) >> (signal - 1)) & 1) != 0;
        }
    }
    return false;
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

    // Kills, each when a new tray has come so far

    void killEarly(int life) {
        startTray();
        pauseFor(life);
        killTray();
        ASSERT_LE(connectors().size(), 2U) << "after " << life << " ms";
    }
    void killAfterTheLaunch(int life) {
        const int started = starts();
        startTray();
        ASSERT_TRUE(waitUntil([&] { return starts() > started; }));
        pauseFor(life);
        killTray();
        ASSERT_LE(connectors().size(), 2U) << "after " << life << " ms";
    }
    void killSettled() {
        const auto settled = lines().count(kSettled);
        startTray();
        ASSERT_TRUE(waitUntil([&] { return lines().count(kSettled) > settled; }));
        expectOneConnector();
        killTray();
        ASSERT_EQ(connectors().size(), 1U);
    }

    void expectOneConnector() {
        // Leftovers take a moment to end.
        ASSERT_TRUE(waitUntil([this] {
            const std::vector<pid_t> child = childrenOf(trayPid());
            return child == std::vector<pid_t>{connectorPid()} && connectors() == child;
        })) << connectors().size()
            << " connectors, " << childrenOf(trayPid()).size() << " of them the tray's";
    }

    /// A connector that the next tray finds in its predecessor's record.
    void startRemembered(QProcess& byHand, int port) {
        QProcessEnvironment variables = environment;
        variables.insert(QStringLiteral("PORT"), QString::number(port));
        variables.insert(QStringLiteral("ORVANTA_STATE_ROOT"), stateRoot());
        byHand.setProcessEnvironment(variables);
        byHand.start(QStringLiteral(ORVANTA_STAGED_RESOURCES "/node-runtime/node"),
                     {QStringLiteral(ORVANTA_STAGED_RESOURCES "/local-server/server.js")});
        ASSERT_TRUE(waitUntil([&] { return ConnectorClient(port).answers(); }));
        QFile pidFile(pidFilePath());
        ASSERT_TRUE(pidFile.open(QIODevice::WriteOnly));
        pidFile.write(pidFileLine(static_cast<pid_t>(byHand.processId())));
    }

    QString pidFilePath() const {
        return home.filePath(QStringLiteral("run/orvanta-tray.children"));
    }
};

} // namespace

TEST_F(TrayLeftover, AfterAHundredKilledTraysOneConnectorRuns) {
    constexpr int kKills = 100;
    std::mt19937 random(20261121);
    const auto upTo = [&random](unsigned ms) { return static_cast<int>(random() % ms); };
    const std::array<std::function<void()>, 3> kinds{[&] { killEarly(upTo(300)); },
                                                     [&] { killAfterTheLaunch(upTo(10)); },
                                                     [&] { killSettled(); }};
    for (int i = 1; i <= kKills && !HasFatalFailure(); ++i) {
        SCOPED_TRACE("kill " + std::to_string(i));
        kinds[static_cast<std::size_t>(i) % kinds.size()]();
    }
    ASSERT_FALSE(HasFatalFailure());
    const int before = connectorPid();
    startTray();
    ASSERT_TRUE(waitForNewConnector(before));
    expectOneConnector();
    RecordProperty("connectors_started", starts());
}

TEST_F(TrayLeftover, IsSignalledBeforeItsSuccessorIsLaunched) {
    startAndWaitForConnector();
    const pid_t leftover = connectorPid();
    killTray();
    // So that the signal can be seen for as long as need be.
    ASSERT_EQ(::kill(leftover, SIGSTOP), 0);
    std::mutex mutex;
    std::vector<bool> wasSignalled; // at each launch
    LaunchWatch watch([&](const std::string& program) {
        if (program.ends_with("/node-runtime/node")) {
            const std::lock_guard lock(mutex);
            wasSignalled.push_back(hasPending(leftover, SIGTERM));
        }
    });
    EXPECT_FALSE(hasPending(leftover, SIGTERM));
    watch.prepare(tray);
    startTray();
    if (!watch.begin(tray)) {
        ::kill(leftover, SIGKILL);
        GTEST_SKIP() << "NOT RUN: system calls cannot be held up here.";
    }
    EXPECT_TRUE(waitForNewConnector(leftover));
    ::kill(leftover, SIGCONT);
    EXPECT_TRUE(waitUntil([&] { return !isAlive(leftover); }));
    const std::lock_guard lock(mutex);
    EXPECT_EQ(wasSignalled, std::vector<bool>{true});
}

TEST_F(TrayLeftover, OneThatIsAdoptedGetsNoSignal) {
    QProcess byHand;
    startRemembered(byHand, 3000);
    const auto pid = static_cast<pid_t>(byHand.processId());
    startTray();
    ASSERT_TRUE(waitForLine(kSettled));
    pauseFor(500);
    EXPECT_TRUE(isAlive(pid));
    EXPECT_TRUE(childrenOf(trayPid()).empty());
    byHand.kill();
    byHand.waitForFinished();
}

TEST_F(TrayLeftover, OneOnAnotherPortIsAskedToEnd) {
    QProcess byHand;
    startRemembered(byHand, 3001);
    startTray();
    ASSERT_TRUE(waitUntil([&] { return byHand.waitForFinished(0); }));
    // As it does when asked to.
    EXPECT_EQ(byHand.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(byHand.exitCode(), 0);
    ASSERT_TRUE(waitForLine(kSettled));
    expectOneConnector();
}

class TrayRecord : public TrayLeftover, public ::testing::WithParamInterface<const char*> {
protected:
    void SetUp() override {
        // Should the session have no directory of its own.
        environment.insert(QStringLiteral("TMPDIR"), home.filePath(QStringLiteral("temporary")));
        QDir().mkpath(home.filePath(QStringLiteral("temporary")));
        if (expectedFolder() != QStringLiteral("run")) {
            environment.remove(QStringLiteral("XDG_RUNTIME_DIR"));
        }
    }

    static QString expectedFolder() { return QLatin1String(GetParam()); }

    /// Below the home, in all folders.
    QStringList records() const {
        QStringList found;
        QDirIterator items(home.path(), {QStringLiteral("*children*")},
                           QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                           QDirIterator::Subdirectories);
        while (items.hasNext()) {
            found.append(items.next().mid(home.path().size() + 1));
        }
        return found;
    }
};

TEST_P(TrayRecord, IsNeverInTheStateRootAndGoneAfterQuit) {
    startAndWaitForConnector();
    ASSERT_TRUE(waitForLine(kSettled));
    // For a moment it is beside the one that replaces it.
    ASSERT_TRUE(waitUntil([&] { return records().size() == 1; }))
        << records().join(u'\n').toStdString();
    EXPECT_EQ(records().first().section(u'/', 0, 0), expectedFolder());
    EXPECT_EQ(records().first().section(u'/', -1), QStringLiteral("orvanta-tray.children"));
    type(QStringLiteral("Quit"));
    EXPECT_EQ(waitForExit(), 0);
    EXPECT_EQ(records(), QStringList());
}

INSTANTIATE_TEST_SUITE_P(Folder, TrayRecord, ::testing::Values("run", "temporary"),
                         [](const auto& folder) { return std::string(folder.param); });

} // namespace orvanta::tests
