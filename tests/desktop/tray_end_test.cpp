// SPDX-License-Identifier: MIT
#include "desktop/desktop_test.h"
#include "desktop/session_manager.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTimer>

#include <csignal>

namespace orvanta::tests {

class TrayEnd : public DesktopTest {
protected:
    /// How long one who asked for the end waits for it: a blink. A sanitizer looks back at its own.
    static constexpr qint64 kAtOnceMs = ORVANTA_SANITIZED ? 2'000 : 200;

    /// The connector notes each SIGTERM and lives on for a second, so that a second one is noted
    /// too.
    void startWithCountingConnector() {
        const QString script = home.filePath(QStringLiteral("count.js"));
        QFile file(script);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("process.on('SIGTERM', () => require('fs').appendFileSync('" + notes().toUtf8() +
                   "', 'SIGTERM\\n'));\n");
        file.close();
        environment.insert(QStringLiteral("NODE_OPTIONS"), QStringLiteral("--require ") + script);
        switches.insert(QStringLiteral("exitDelayMs"), 1'000);
        startEverything();
    }

    /// After the connector has ended.
    QByteArray signalsOfConnector(pid_t connector) const {
        EXPECT_TRUE(waitFor([&] { return !isAlive(connector); }));
        QFile file(notes());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    QString notes() const { return home.filePath(QStringLiteral("signals")); }
};

TEST_F(TrayEnd, QuitEndsTheTrayAtOnceAndTheConnectorWithIt) {
    startWithCountingConnector();
    const pid_t child = connectorPid();
    const pid_t pid = trayPid();
    const TrayMenu open = menu();
    const int quit = open.entry(QStringLiteral("Quit")).id;
    QElapsedTimer elapsed;
    elapsed.start();
    open.choose(quit);
    EXPECT_TRUE(waitFor([&] { return !isAlive(pid); })) << scene();
    EXPECT_LT(elapsed.elapsed(), kAtOnceMs);
    EXPECT_EQ(waitForExit(), 0);
    EXPECT_EQ(signalsOfConnector(child), "SIGTERM\n");
    EXPECT_EQ(starts(), 1);
    EXPECT_TRUE(waitFor([this] { return iconArea().isEmpty(); })) << scene();
    EXPECT_EQ(item->registeredCount(), 0);
}

TEST_F(TrayEnd, TheSignalEndsItLikeQuit) {
    startWithCountingConnector();
    const pid_t child = connectorPid();
    const pid_t pid = trayPid();
    QElapsedTimer elapsed;
    elapsed.start();
    ::kill(pid, SIGTERM);
    EXPECT_TRUE(waitFor([&] { return !isAlive(pid); })) << scene();
    EXPECT_LT(elapsed.elapsed(), kAtOnceMs);
    EXPECT_EQ(waitForExit(), 0);
    EXPECT_EQ(signalsOfConnector(child), "SIGTERM\n");
    EXPECT_EQ(starts(), 1);
}

TEST_F(TrayEnd, LoggingOutEndsItLikeQuitAndTheSessionDoesNotStartItAgain) {
    SessionManager manager;
    ASSERT_FALSE(manager.address().isEmpty());
    QTimer messages;
    QObject::connect(&messages, &QTimer::timeout, [&manager] { manager.handleMessages(); });
    messages.start(10);
    environment.insert(QStringLiteral("SESSION_MANAGER"), manager.address());
    startWithCountingConnector();
    ASSERT_TRUE(waitFor([&] { return manager.hasClient(); })) << scene();
    const pid_t child = connectorPid();
    const pid_t pid = trayPid();
    manager.logOut();
    EXPECT_TRUE(waitFor([&] { return !isAlive(pid); })) << scene();
    EXPECT_EQ(waitForExit(), 0);
    EXPECT_EQ(manager.restartStyle(), SmRestartNever);
    EXPECT_EQ(signalsOfConnector(child), "SIGTERM\n");
    EXPECT_EQ(starts(), 1);
}

TEST_F(TrayEnd, TheEndOfTheDisplayEndsTheConnectorToo) {
    startWithCountingConnector();
    const pid_t child = connectorPid();
    const pid_t pid = trayPid();
    session.killDisplay();
    EXPECT_TRUE(waitFor([&] { return !isAlive(pid); })) << trayErrors().toStdString();
    EXPECT_EQ(signalsOfConnector(child), "SIGTERM\n");
    EXPECT_EQ(starts(), 1);
}

} // namespace orvanta::tests
