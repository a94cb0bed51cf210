// SPDX-License-Identifier: MIT
#include "integration/tcp_listener/tcp_client.h"
#include "integration/tray/tray_process.h"

#include <QUrl>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <deque>
#include <map>
#include <memory>
#include <sys/resource.h>

namespace orvanta::tests {
namespace {

constexpr int kConnections = ORVANTA_SANITIZED ? 2'000 : 10'000;
constexpr std::size_t kMostWaiting = 64;

/// Any local process may do this to the endpoint for restarts.
class TrayAbuse : public TrayTest {
protected:
    void startAndSettle() {
        startAndWaitForConnector();
        ASSERT_TRUE(waitForLine(QStringLiteral("Status: Not Paired")));
        m_url = connector()
                    .get(QStringLiteral("/demo/environment"))
                    .value(QStringLiteral("ORVANTA_HOST_CONTROL_URL"))
                    .toString();
        m_before = descriptorCount(trayPid());
    }

    /// One more connection, which sends this and stays open.
    void abuse(const QByteArray& sent) {
        held.push_back(std::make_unique<TcpClient>(static_cast<std::uint16_t>(QUrl(m_url).port())));
        ASSERT_EQ(held.back()->connectError(), 0) << held.size();
        ++endings[held.back()->send(sent)];
        if (++m_made % 50 == 0) {
            m_most = std::max(m_most, descriptorCount(trayPid()));
        }
    }

    void expectFewDescriptors() {
        RecordProperty("most_descriptors", static_cast<int>(m_most));
        ASSERT_GT(m_most, 0U);
        // A poll may have a connection of its own.
        EXPECT_LE(m_most, m_before + kMostWaiting + 2);
    }

    void expectRestartOnRequest() {
        const int before = connectorPid();
        constexpr int kPatienceMs = 20'000;
        const auto reply = request("POST", m_url, {}, kPatienceMs);
        ASSERT_TRUE(reply);
        EXPECT_EQ(reply->status, 202);
        EXPECT_TRUE(waitForNewConnector(before)) << "the restart that was asked for did not come";
    }

    void expectPolls() {
        const int before = polls();
        EXPECT_TRUE(waitUntil([&] { return polls() >= before + 3; })) << "nobody polls any more";
    }

    std::deque<std::unique_ptr<TcpClient>> held;
    /// How often which error ended the sending; 0 is none.
    std::map<int, int> endings;

private:
    int polls() const {
        const QList<QJsonObject> all = journal(QStringLiteral("request"));
        return static_cast<int>(std::count_if(all.begin(), all.end(), [](const QJsonObject& entry) {
            return entry.value(QStringLiteral("request")).toString() ==
                   QStringLiteral("GET /api/ov/status");
        }));
    }

    QString m_url;
    int m_made = 0;
    std::size_t m_before = 0;
    std::size_t m_most = 0;
};

class TrayAbuseByBytes : public TrayAbuse, public ::testing::WithParamInterface<int> {};

/// So many descriptors for this process; what it starts from then on has them, too.
bool allowDescriptors(rlim_t count) {
    struct rlimit limit {};
    ::getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = std::max(limit.rlim_cur, count);
    limit.rlim_max = std::max(limit.rlim_max, count);
    return ::setrlimit(RLIMIT_NOFILE, &limit) == 0;
}

} // namespace

TEST_P(TrayAbuseByBytes, ManyConnectionsCostFewDescriptorsAndNoSupervision) {
    const QByteArray sent(GetParam(), 'x');
    startAndSettle();
    for (int i = 0; i < kConnections; ++i) {
        abuse(sent);
        ASSERT_FALSE(HasFatalFailure());
        // Held open for as long as the tray may hold them, and longer.
        if (held.size() > 2 * kMostWaiting) {
            held.pop_front();
        }
    }
    // What does not fit into one buffer may be refused, but nobody is kept waiting.
    const bool mayBeRefused = sent.size() > 1;
    for (const auto& [error, count] : endings) {
        EXPECT_TRUE(error == 0 || (mayBeRefused && (error == EPIPE || error == ECONNRESET)))
            << count << " times: " << std::strerror(error);
    }
    expectFewDescriptors();

    const int first = connectorPid();
    ::kill(first, SIGKILL);
    ASSERT_TRUE(waitForNewConnector(first)) << "supervision stopped";
    expectRestartOnRequest();
}

INSTANTIATE_TEST_SUITE_P(Bytes, TrayAbuseByBytes, ::testing::Values(0, 1, 1024 * 1024));

TEST_F(TrayAbuse, TenThousandConnectionsAtOnceLeaveRoomForARequestAndForPolls) {
    startAndSettle();
    // Now, so that the tray itself has what it always has.
    if (!allowDescriptors(kConnections + 500)) {
        GTEST_SKIP() << "NOT RUN: no process may have that many descriptors here.";
    }
    for (int i = 1; i <= kConnections; ++i) {
        abuse(i % 2 == 0 ? "x" : QByteArray());
        ASSERT_FALSE(HasFatalFailure());
        if (i % (kConnections / 2) == 0) {
            SCOPED_TRACE(i);
            expectFewDescriptors();
            expectPolls();
            expectRestartOnRequest();
            expectPolls();
        }
    }
    EXPECT_EQ(held.size(), static_cast<std::size_t>(kConnections));
    EXPECT_EQ(endings, (std::map<int, int>{{0, kConnections}}));
}

} // namespace orvanta::tests
