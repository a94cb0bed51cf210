// SPDX-License-Identifier: MIT
#include "desktop/desktop_test.h"

#include <QElapsedTimer>

#include <csignal>

namespace orvanta::tests {

/// A desktop that hangs for a while, as after a slow login.
class TrayOnSlowDesktop : public DesktopTest {
protected:
    bool waitForConnector() {
        return waitFor([this] { return connectorPort() > 0 && connector().answers(); });
    }
    void expectSupervision() {
        const int before = connectorPid();
        ASSERT_TRUE(connector().post(QStringLiteral("/demo/crash?code=3")));
        EXPECT_TRUE(waitForNewConnector(before));
    }
};

TEST_F(TrayOnSlowDesktop, ABusThatSaysNothingStopsNothing) {
    ASSERT_TRUE(panel->start()) << scene();
    ::kill(session.busProcess(), SIGSTOP);
    startTrayAsIcon();
    ASSERT_TRUE(waitForConnector());
    // Longer than the tray waits for the bus.
    holdsFor([] { return true; }, std::chrono::seconds(6));
    expectSupervision();
    ::kill(session.busProcess(), SIGCONT);
    EXPECT_TRUE(waitForItem()) << scene();
}

TEST_F(TrayOnSlowDesktop, WithoutABusTheUserIsToldOnceAndTheIconComesWithIt) {
    session.killBus();
    startTrayAsIcon();
    ASSERT_TRUE(waitForConnector());
    ASSERT_TRUE(waitFor([this] { return trayErrors().count("no session bus answers here") > 0; },
                        std::chrono::seconds(14)))
        << trayErrors().toStdString();
    EXPECT_EQ(trayErrors().count('\n'), 1) << trayErrors().toStdString();
    ASSERT_TRUE(session.startBus());
    connectToBus();
    panel = std::make_unique<Panel>(session);
    ASSERT_TRUE(panel->start()) << scene();
    EXPECT_TRUE(waitForItem()) << scene();
    EXPECT_EQ(trayErrors().count('\n'), 1) << trayErrors().toStdString();
}

TEST_F(TrayOnSlowDesktop, QuittingDoesNotWaitForABusThatSaysNothing) {
    ::kill(session.busProcess(), SIGSTOP);
    startTrayAsIcon();
    ASSERT_TRUE(waitForConnector());
    const pid_t child = connectorPid();
    QElapsedTimer elapsed;
    elapsed.start();
    ::kill(trayPid(), SIGTERM);
    EXPECT_EQ(waitForExit(), 0);
    EXPECT_LT(elapsed.elapsed(), ORVANTA_SANITIZED ? 3'000 : 1'000);
    EXPECT_TRUE(waitFor([child] { return !isAlive(child); }));
    ::kill(session.busProcess(), SIGCONT);
}

TEST_F(TrayOnSlowDesktop, AWatcherThatComesToItselfIsFound) {
    ASSERT_TRUE(panel->start()) << scene();
    ::kill(panel->process(), SIGSTOP);
    startTrayAsIcon();
    ASSERT_TRUE(waitForConnector());
    // Longer than the tray waits for an answer.
    holdsFor([] { return true; }, std::chrono::seconds(7));
    ::kill(panel->process(), SIGCONT);
    EXPECT_TRUE(waitForItem()) << scene();
}

} // namespace orvanta::tests
