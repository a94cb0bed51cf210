// SPDX-License-Identifier: MIT
#include "integration/tray/tray_process.h"

#include <QElapsedTimer>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace orvanta::tests {

namespace {

/// Holds a port as another program would.
class TakenPort {
public:
    bool take(int port) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<std::uint16_t>(port));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        const int on = 1;
        ::setsockopt(m_socket, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
        return ::bind(m_socket, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0 &&
               ::listen(m_socket, 1) == 0;
    }
    TakenPort() = default;
    TakenPort(const TakenPort&) = delete;
    TakenPort& operator=(const TakenPort&) = delete;
    ~TakenPort() { ::close(m_socket); }

private:
    int m_socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
};

QString hostControlUrl(const ConnectorClient& connector) {
    return connector.get(QStringLiteral("/demo/environment"))
        .value(QStringLiteral("ORVANTA_HOST_CONTROL_URL"))
        .toString();
}

} // namespace

using TrayRestart = TrayTest;

TEST_F(TrayRestart, AHostManagedRestartKeepsThePort) {
    startAndWaitForConnector();
    const int port = connectorPort();
    const int first = connectorPid();
    const auto reply = request("POST", hostControlUrl(connector()));
    ASSERT_TRUE(reply);
    EXPECT_EQ(reply->status, 202);
    EXPECT_EQ(reply->body, "{\"accepted\":true}");
    ASSERT_TRUE(waitForNewConnector(first));
    EXPECT_EQ(connectorPort(), port);
    EXPECT_EQ(starts(), 2);
}

TEST_F(TrayRestart, APortTakenMeanwhileLeadsToAPortOfTheSystem) {
    startAndWaitForConnector();
    const int port = connectorPort();
    const int first = connectorPid();
    ASSERT_TRUE(request("POST", hostControlUrl(connector())));
    TakenPort taken;
    ASSERT_TRUE(waitUntil([&] { return taken.take(port); }));
    ASSERT_TRUE(waitForNewConnector(first));
    EXPECT_NE(connectorPort(), port);
    EXPECT_TRUE(waitForLine(
        QStringLiteral("Orvanta server failed after requesting port %1; retrying with an "
                       "OS-assigned port")
            .arg(port)));
    EXPECT_EQ(starts(), 3);
}

TEST_F(TrayRestart, TheConnectorCanAskForItsRestart) {
    startAndWaitForConnector();
    const int port = connectorPort();
    const int first = connectorPid();
    ASSERT_TRUE(connector().post(QStringLiteral("/demo/restart")));
    ASSERT_TRUE(waitForNewConnector(first));
    EXPECT_EQ(connectorPort(), port);
}

TEST_F(TrayRestart, TheMenusRestartGoesThroughTheConnectorOnce) {
    startAndWaitForConnector();
    const int first = connectorPid();
    type(QStringLiteral("Restart"));
    ASSERT_TRUE(waitForNewConnector(first));
    int asked = 0;
    for (const QJsonObject& entry : journal(QStringLiteral("request"))) {
        asked += entry.value(QStringLiteral("request")).toString() ==
                 QStringLiteral("POST /api/server/restart");
    }
    EXPECT_EQ(asked, 1);
    EXPECT_EQ(starts(), 2);
}

class RefusedRestart : public TrayTest, public ::testing::WithParamInterface<const char*> {};

TEST_P(RefusedRestart, IsDoneByTheTray) {
    startAndWaitForConnector();
    const int first = connectorPid();
    const int port = connectorPort();
    ASSERT_TRUE(connector().post(QString::fromLatin1(GetParam())));
    type(QStringLiteral("Restart"));
    ASSERT_TRUE(waitForNewConnector(first));
    EXPECT_EQ(connectorPort(), port);
    EXPECT_EQ(starts(), 2);
}

INSTANTIATE_TEST_SUITE_P(Ways, RefusedRestart,
                         ::testing::Values("/demo/refuse-restart?on=1", "/demo/abort?what=restart",
                                           "/demo/status-code?value=302&what=restart"));

TEST_F(TrayRestart, AStoppedConnectorThatTakesLongClearsItsSuccessorWhenItExits) {
    switches.insert(QStringLiteral("exitDelayMs"), 10'000);
    startAndWaitForConnector();
    const int first = connectorPid();
    ASSERT_TRUE(request("POST", hostControlUrl(connector())));
    // The old one still holds the port, so its successor fails and is retried on any port.
    ASSERT_TRUE(waitForNewConnector(first));
    const int second = connectorPid();
    ASSERT_TRUE(waitUntil([&] { return !isAlive(first); }, 15'000));
    // The late exit made the tray forget the second, so a third is launched a second later.
    ASSERT_TRUE(waitForNewConnector(second));
    EXPECT_TRUE(isAlive(second));
}

} // namespace orvanta::tests
