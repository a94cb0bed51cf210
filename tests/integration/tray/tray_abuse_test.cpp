// SPDX-License-Identifier: MIT
#include "integration/tcp_listener/tcp_client.h"
#include "integration/tray/tray_process.h"

#include <QUrl>

#include <csignal>
#include <deque>
#include <memory>

namespace orvanta::tests {
namespace {

constexpr int kConnections = ORVANTA_SANITIZED ? 2'000 : 10'000;
constexpr std::size_t kMostWaiting = 64;

/// Any local process may do this to the endpoint for restarts.
class TrayAbuse : public TrayTest, public ::testing::WithParamInterface<int> {
protected:
    QString restartUrl() const {
        return connector()
            .get(QStringLiteral("/demo/environment"))
            .value(QStringLiteral("ORVANTA_HOST_CONTROL_URL"))
            .toString();
    }
};

} // namespace

TEST_P(TrayAbuse, ManyConnectionsCostFewDescriptorsAndNoSupervision) {
    const QByteArray sent(GetParam(), 'x');
    startAndWaitForConnector();
    ASSERT_TRUE(waitForLine(QStringLiteral("Status: Not Paired")));
    const QString url = restartUrl();
    const auto port = static_cast<std::uint16_t>(QUrl(url).port());
    const std::size_t before = descriptorCount(trayPid());
    std::size_t most = 0;
    // Held open for as long as the tray may hold them, and longer.
    std::deque<std::unique_ptr<TcpClient>> held;
    for (int i = 0; i < kConnections; ++i) {
        held.push_back(std::make_unique<TcpClient>(port));
        ASSERT_EQ(held.back()->connectError(), 0) << i;
        if (!sent.isEmpty()) {
            held.back()->pour(sent.size());
        }
        if (held.size() > 2 * kMostWaiting) {
            held.pop_front();
        }
        if (i % 100 == 0) {
            most = std::max(most, descriptorCount(trayPid()));
        }
    }
    RecordProperty("most_descriptors", static_cast<int>(most));
    // A poll may have a connection of its own.
    EXPECT_LE(most, before + kMostWaiting + 2);

    const int first = connectorPid();
    ::kill(first, SIGKILL);
    ASSERT_TRUE(waitForNewConnector(first)) << "supervision stopped";
    const int second = connectorPid();
    const auto reply = request("POST", url);
    ASSERT_TRUE(reply);
    EXPECT_EQ(reply->status, 202);
    EXPECT_TRUE(waitForNewConnector(second)) << "the restart that was asked for did not come";
}

INSTANTIATE_TEST_SUITE_P(Bytes, TrayAbuse, ::testing::Values(0, 1, 1024 * 1024));

} // namespace orvanta::tests
