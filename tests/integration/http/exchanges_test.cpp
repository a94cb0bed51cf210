// SPDX-License-Identifier: MIT
#include "integration/http/exchange_outcome.h"
#include "platform/http/exchanges.h"

#include <QTimer>

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <utility>

namespace orvanta {
namespace {

HttpRequest anyRequest() {
    return {HttpMethod::Get, QStringLiteral("http://127.0.0.1:1/"),
            HttpLimits{Seconds(20), Seconds(25)}, 1024};
}

/// Ends when it is told to, or as it is begun, and tells when it goes.
class TestExchange : public Exchange {
public:
    enum class Ends { asItIsBegun, whenTold };

    TestExchange(Ends when, bool& isGone)
        : Exchange(anyRequest()), m_when(when), m_isGone(isGone) {}
    TestExchange(const TestExchange&) = delete;
    TestExchange& operator=(const TestExchange&) = delete;
    ~TestExchange() override { m_isGone = true; }

    void finish() { succeed({200, "ok"}); }

private:
    void send() override {
        if (m_when == Ends::asItIsBegun) {
            finish();
        }
    }
    void stop() override {}

    const Ends m_when;
    bool& m_isGone;
};

class ExchangesTest : public ::testing::Test {
protected:
    /// The exchange under way, if it still is.
    TestExchange* start(TestExchange::Ends when) {
        auto exchange = std::make_unique<TestExchange>(when, m_isGone);
        TestExchange* const begun = exchange.get();
        m_outcome = observe(perform(std::move(exchange)));
        return begun;
    }

    Task<HttpOutcome> perform(std::unique_ptr<Exchange> exchange) {
        auto outcome = m_exchanges->start(std::move(exchange));
        co_return co_await outcome;
    }

    bool m_isGone = false;
    std::shared_ptr<Exchanges> m_exchanges = std::make_shared<Exchanges>();
    std::shared_ptr<ExchangeOutcome> m_outcome;
};

TEST_F(ExchangesTest, CallerIsResumedInsideTheEnd) {
    TestExchange* const exchange = start(TestExchange::Ends::whenTold);
    QTimer::singleShot(0, [&] {
        EXPECT_FALSE(m_outcome->hasEnded());
        exchange->finish();
        EXPECT_EQ(m_outcome->status(), 200);
    });
    EXPECT_TRUE(spinUntil([&] { return m_outcome->hasEnded(); }));
}

TEST_F(ExchangesTest, CallerOfAnExchangeThatEndsAsItIsBegunIsResumedOnALaterTurn) {
    start(TestExchange::Ends::asItIsBegun);
    EXPECT_FALSE(m_outcome->hasEnded());
    EXPECT_TRUE(spinUntil([&] { return m_outcome->hasEnded(); }));
    EXPECT_EQ(m_outcome->status(), 200);
}

TEST_F(ExchangesTest, AnExchangeThatEndedAsItWasBegunIsAbandonedByTheClosing) {
    start(TestExchange::Ends::asItIsBegun);
    m_exchanges->close();
    EXPECT_TRUE(m_outcome->abandoned);
    EXPECT_TRUE(m_isGone);
}

TEST_F(ExchangesTest, CallerMayTurnTheLoopUntilTheNextOneIsResumedThatEndedAsItWasBegun) {
    bool isFirstGone = false;
    auto first = std::make_unique<TestExchange>(TestExchange::Ends::asItIsBegun, isFirstGone);
    std::optional<bool> hasSecondEnded;
    callAfter(perform(std::move(first)), [&] {
        hasSecondEnded = spinUntil([&] { return m_outcome->hasEnded(); }, std::chrono::seconds(5));
    });
    start(TestExchange::Ends::asItIsBegun);
    EXPECT_TRUE(spinUntil([&] { return hasSecondEnded.has_value() && isFirstGone; }));
    EXPECT_EQ(hasSecondEnded, true);
}

TEST_F(ExchangesTest, AnEndedExchangeOutlivesACallerThatClosesAll) {
    auto owned = std::make_unique<TestExchange>(TestExchange::Ends::whenTold, m_isGone);
    TestExchange* const exchange = owned.get();
    bool hasClosed = false;
    callAfter(perform(std::move(owned)), [&] {
        m_exchanges->close();
        m_exchanges.reset();
        hasClosed = true;
    });
    QTimer::singleShot(0, [&] {
        exchange->finish();
        EXPECT_TRUE(hasClosed);
        EXPECT_FALSE(m_isGone);
    });
    EXPECT_TRUE(spinUntil([&] { return m_isGone; }));
}

TEST_F(ExchangesTest, AnEndedExchangeOutlivesALoopThatItsCallerTurns) {
    auto owned = std::make_unique<TestExchange>(TestExchange::Ends::whenTold, m_isGone);
    TestExchange* const exchange = owned.get();
    bool hasTurned = false;
    callAfter(perform(std::move(owned)), [&] {
        spinFor(std::chrono::milliseconds(20));
        EXPECT_FALSE(m_isGone);
        hasTurned = true;
    });
    QTimer::singleShot(0, [&] {
        exchange->finish();
        EXPECT_FALSE(m_isGone);
    });
    EXPECT_TRUE(spinUntil([&] { return hasTurned && m_isGone; }));
}

} // namespace
} // namespace orvanta
