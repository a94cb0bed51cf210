// SPDX-License-Identifier: MIT
#include "integration/tray/tray_process.h"

#include <QDir>

namespace orvanta::tests {

class TrayAdoption : public TrayTest {
protected:
    void startConnectorByHand() {
        QProcessEnvironment variables = QProcessEnvironment::systemEnvironment();
        variables.insert(QStringLiteral("PORT"), QStringLiteral("3000"));
        variables.insert(QStringLiteral("HOST"), QStringLiteral("127.0.0.1"));
        const QString otherState = home.filePath(QStringLiteral("other"));
        QDir().mkpath(otherState);
        variables.insert(QStringLiteral("ORVANTA_STATE_ROOT"), otherState);
        byHand.setProcessEnvironment(variables);
        byHand.start(QStringLiteral(ORVANTA_STAGED_RESOURCES "/node-runtime/node"),
                     {QStringLiteral(ORVANTA_STAGED_RESOURCES "/local-server/server.js")});
        ASSERT_TRUE(waitUntil([this] { return found.answers(); }))
            << byHand.readAllStandardError().toStdString();
        ASSERT_EQ(found.pid(), byHand.processId()) << "another program answers on port 3000";
    }
    ~TrayAdoption() override {
        byHand.kill();
        byHand.waitForFinished();
    }

    QProcess byHand;
    ConnectorClient found{3000};
};

TEST_F(TrayAdoption, AConnectorOnPort3000IsAdoptedAndNoSecondOneLaunched) {
    startConnectorByHand();
    startTray();
    EXPECT_TRUE(waitForLine(QStringLiteral("Status: Not Paired")));
    type(QStringLiteral("Sign In / Pair"));
    EXPECT_TRUE(waitForLine(QStringLiteral("Status: Online")));
    EXPECT_EQ(childrenOf(trayPid()), std::vector<pid_t>{});
    EXPECT_EQ(starts(), 0);
}

TEST_F(TrayAdoption, AnAdoptedConnectorOutlivesTheTray) {
    startConnectorByHand();
    startTray();
    ASSERT_TRUE(waitForLine(QStringLiteral("Status: Not Paired")));
    type(QStringLiteral("Quit"));
    EXPECT_EQ(waitForExit(), 0);
    EXPECT_TRUE(found.answers());
}

} // namespace orvanta::tests
