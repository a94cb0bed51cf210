// SPDX-License-Identifier: MIT
#include "desktop/desktop_test.h"
#include "integration/tray/runtime_channel.h"

#include <QJsonDocument>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace orvanta::tests {
namespace {

/// Takes connections and never says a word.
class SilentServer {
public:
    SilentServer() {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        ::bind(m_socket, reinterpret_cast<sockaddr*>(&address), size);
        ::listen(m_socket, 8);
        ::getsockname(m_socket, reinterpret_cast<sockaddr*>(&address), &size);
        m_port = ntohs(address.sin_port);
    }
    ~SilentServer() { ::close(m_socket); }
    SilentServer(const SilentServer&) = delete;
    SilentServer& operator=(const SilentServer&) = delete;

    QString url() const { return QStringLiteral("http://127.0.0.1:%1").arg(m_port); }

private:
    int m_socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    int m_port = 0;
};

} // namespace

class TrayMenuUpdates : public DesktopTest {
protected:
    void SetUp() override {
        DesktopTest::SetUp();
        ASSERT_FALSE(channel.baseUrl().isEmpty());
        takeUpdatesFrom(channel.baseUrl());
    }

    void takeUpdatesFrom(const QString& baseUrl) const {
        const QJsonObject updates{{QStringLiteral("manifestBaseUrl"), baseUrl},
                                  {QStringLiteral("channel"), QStringLiteral("beta")}};
        const QJsonObject poll{{QStringLiteral("statusPollIntervalSeconds"), 0.2}};
        writeStateFile(QStringLiteral("config.json"),
                       QJsonDocument(QJsonObject{{QStringLiteral("runtimeUpdates"), updates},
                                                 {QStringLiteral("tray"), poll}})
                           .toJson());
    }

    /// Which of Check, Update and Rollback can be chosen, for instance "CU-".
    QString offered() const {
        const QList<TrayMenu::Entry> entries = menu().entries();
        if (entries.size() != 16) {
            return {};
        }
        QString result;
        for (const auto& [index, letter] : {std::pair(10, 'C'), {11, 'U'}, {12, 'R'}}) {
            result += QLatin1Char(entries[index].isEnabled ? letter : '-');
        }
        return result;
    }
    bool waitForOffer(const QString& wanted,
                      std::chrono::seconds limit = std::chrono::seconds(20)) {
        return waitFor([&] { return offered() == wanted; }, limit);
    }

    /// A check asked for while the one of the start runs would do nothing; before that one begins
    /// the menu looks as it does after it, but for this line.
    void startAndWaitForFirstCheck() {
        startEverything();
        ASSERT_TRUE(waitForEntry(QStringLiteral("Runtime: Runtime manifest was not available.")))
            << scene();
        ASSERT_TRUE(waitForOffer(QStringLiteral("C--"))) << scene();
    }

    RuntimeChannel channel;
};

TEST_F(TrayMenuUpdates, WhatIsOfferedFollowsTheUpdate) {
    startAndWaitForFirstCheck();
    ASSERT_TRUE(channel.publish(QStringLiteral("1.1.0")));
    ASSERT_TRUE(choose(QStringLiteral("Check for Runtime Updates")));
    ASSERT_TRUE(waitForEntry(QStringLiteral("Runtime: Update available: 1.1.0"))) << scene();
    ASSERT_TRUE(waitForOffer(QStringLiteral("CU-"))) << scene();

    ASSERT_TRUE(choose(QStringLiteral("Update Desktop Connector")));
    ASSERT_TRUE(waitForOffer(QStringLiteral("---"))) << scene();
    ASSERT_TRUE(waitForOffer(QStringLiteral("C-R"))) << scene();
    EXPECT_TRUE(waitForEntry(QStringLiteral("Runtime: Updated to 1.1.0"))) << scene();

    ASSERT_TRUE(choose(QStringLiteral("Rollback Runtime")));
    ASSERT_TRUE(waitFor([this] {
        return shownTexts().value(7).startsWith(QStringLiteral("Runtime: Rolled back to "));
    })) << scene();
    EXPECT_TRUE(waitFor([this] { return connector().answers(); })) << scene();
}

TEST_F(TrayMenuUpdates, NothingOfItCanBeChosenWhileACheckRuns) {
    startAndWaitForFirstCheck();
    auto server = std::make_unique<SilentServer>();
    takeUpdatesFrom(server->url());
    ASSERT_TRUE(choose(QStringLiteral("Check for Runtime Updates")));
    ASSERT_TRUE(waitForEntry(QStringLiteral("Runtime: Checking..."))) << scene();
    EXPECT_TRUE(waitForOffer(QStringLiteral("---"))) << scene();
    EXPECT_TRUE(menu().entry(QStringLiteral("Restart")).isEnabled);
    EXPECT_TRUE(menu().entry(QStringLiteral("Quit")).isEnabled);
    server.reset();
    EXPECT_TRUE(waitForOffer(QStringLiteral("C--"))) << scene();
}

TEST_F(TrayMenuUpdates, ALongRuntimeTextIsCutToTwoLines) {
    startAndWaitForFirstCheck();
    ASSERT_TRUE(channel.publish(QStringLiteral("9.9.9-") + QString(140, QLatin1Char('x'))));
    ASSERT_TRUE(choose(QStringLiteral("Check for Runtime Updates")));
    ASSERT_TRUE(waitForOffer(QStringLiteral("CU-"))) << scene();
    const QString shown = menu().entries().value(9).shownText();
    EXPECT_TRUE(shown.startsWith(QStringLiteral("Runtime: Update available:"))) << scene();
    EXPECT_EQ(shown.count(QLatin1Char('\n')), 1) << scene();
    EXPECT_LT(shown.size(), 120) << scene();
}

} // namespace orvanta::tests
