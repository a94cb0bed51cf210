// SPDX-License-Identifier: MIT
#include "integration/http/loopback_test.h"
#include "integration/http/plain_listener.h"

#include <QTimer>

#include <optional>
#include <utility>
#include <vector>

namespace orvanta {
namespace {

using LoopbackLifetime = LoopbackTest;

ScriptedServer::Answer silence() {
    return [](QTcpSocket&) {};
}

ScriptedServer::Answer answerAfter(int milliseconds) {
    return [milliseconds](QTcpSocket& peer) {
        QTimer::singleShot(milliseconds, &peer, [&peer] { peer.write(kOk); });
    };
}

TEST_F(LoopbackLifetime, EventLoopKeepsTurningDuringAnExchange) {
    ScriptedServer server(silence());
    int turns = 0;
    QTimer ticker;
    QObject::connect(&ticker, &QTimer::timeout, &ticker, [&turns] { ++turns; });
    ticker.start(10);
    EXPECT_TRUE(outcomeOf(sessionWith(1, 20)->get(server.url())).error);
    EXPECT_GT(turns, 30);
}

TEST_F(LoopbackLifetime, CallReturnsAtOnceAndEndsOnALaterTurn) {
    ScriptedServer server(replyWith(kOk));
    const auto good = observe(m_session->get(server.url()));
    const auto bad = observe(m_session->get(QStringLiteral("http://127.0.0.1:99999/")));
    EXPECT_FALSE(good->hasEnded());
    EXPECT_FALSE(bad->hasEnded());
    EXPECT_TRUE(spinUntil([&] { return good->hasEnded() && bad->hasEnded(); }));
}

TEST_F(LoopbackLifetime, TwoHundredExchangesAtOnce) {
    ScriptedServer server(answerAfter(100));
    std::vector<std::shared_ptr<ExchangeOutcome>> outcomes;
    for (int i = 0; i < 200; ++i) {
        outcomes.push_back(
            observe(i % 2 == 0 ? m_session->get(server.url()) : m_session->post(server.url())));
    }
    for (const auto& outcome : outcomes) {
        ASSERT_TRUE(spinUntil([&] { return outcome->hasEnded(); }));
        EXPECT_EQ(outcome->status(), 200) << outcome->description().toStdString();
    }
    EXPECT_EQ(server.requests(), 200);
}

TEST_F(LoopbackLifetime, ExchangeOutlivesItsSession) {
    ScriptedServer server(answerAfter(100));
    const auto outcome = observe(m_session->get(server.url()));
    m_session.reset();
    ASSERT_TRUE(spinUntil([&] { return outcome->hasEnded(); }));
    EXPECT_EQ(outcome->status(), 200);
}

TEST_F(LoopbackLifetime, ExchangeNobodyAwaitsReachesTheServer) {
    ScriptedServer server(answerAfter(50));
    m_session->post(server.url());
    m_session.reset();
    EXPECT_TRUE(spinUntil([&] { return server.requests() == 1; }));
    spinFor(std::chrono::milliseconds(150));
}

TEST_F(LoopbackLifetime, EndOfTheSessionsAbandonsWhatIsUnderWay) {
    ScriptedServer server(silence());
    const auto begun = observe(m_session->get(server.url()));
    ASSERT_TRUE(spinUntil([&] { return server.requests() == 1; }));
    const auto justCalled = observe(m_session->post(server.url()));
    m_sessions.reset();
    EXPECT_TRUE(begun->abandoned);
    EXPECT_TRUE(justCalled->abandoned);
    EXPECT_TRUE(observe(m_session->get(server.url()))->abandoned);
    // Neither is sent again, and the last call is not sent at all.
    spinFor(std::chrono::milliseconds(100));
    EXPECT_EQ(server.requests(), 2);
}

TEST_F(LoopbackLifetime, EndOfTheSessionsMayComeAtAnyMoment) {
    for (int turns = 1; turns < 20; ++turns) {
        auto sessions = std::make_unique<LoopbackSessions>();
        const auto session = sessions->make(HttpLimits{Seconds(20), Seconds(25)});
        ScriptedServer server(replyWith(kOk));
        const auto outcome = observe(session->get(server.url()));
        for (int i = 0; i < turns; ++i) {
            QCoreApplication::processEvents();
        }
        sessions.reset();
        EXPECT_TRUE(outcome->hasEnded()) << turns;
        spinFor(std::chrono::milliseconds(10));
    }
}

TEST_F(LoopbackLifetime, AllMayEndInsideTheCallerThatResumes) {
    ScriptedServer server(replyWith(kOk));
    ScriptedServer silent(silence());
    const auto other = observe(m_session->get(silent.url()));
    const auto sibling = observe(m_session->get(server.url()));
    callAfter(m_session->get(server.url()), [this] {
        m_session.reset();
        m_sessions.reset();
    });
    ASSERT_TRUE(spinUntil([&] { return m_sessions == nullptr; }));
    EXPECT_TRUE(other->abandoned);
    EXPECT_TRUE(sibling->hasEnded());
}

Task<> getManyTimes(std::shared_ptr<HttpSession> session, QString url, int times, int* succeeded) {
    for (int i = 0; i < times; ++i) {
        auto exchange = session->get(url);
        HttpOutcome outcome = co_await exchange;
        *succeeded += outcome.takeReply().status == 200 ? 1 : 0;
    }
}

TEST_F(LoopbackLifetime, CallerMayBeginAnotherExchangeAsItResumes) {
    ScriptedServer server(replyWith(kOk));
    int succeeded = 0;
    getManyTimes(m_session, server.url(), 50, &succeeded);
    EXPECT_TRUE(spinUntil([&] { return succeeded == 50; }));
}

TEST_F(LoopbackLifetime, CallerMayTurnTheLoopAsItResumes) {
    ScriptedServer server(replyWith(kOk));
    ExchangeOutcome nested;
    callAfter(m_session->get(server.url()),
              [&] { nested = outcomeOf(m_session->get(server.url())); });
    const auto sibling = observe(m_session->get(server.url()));
    ASSERT_TRUE(spinUntil([&] { return nested.hasEnded() && sibling->hasEnded(); }));
    EXPECT_EQ(nested.status(), 200);
    EXPECT_EQ(sibling->status(), 200);
}

TEST_F(LoopbackLifetime, CallerMayTurnTheLoopUntilAnotherIsResumedThatEndedWithIt) {
    PlainListener server(2);
    std::shared_ptr<ExchangeOutcome> sibling;
    std::optional<bool> hasEnded;
    callAfter(m_session->get(server.url()), [&] {
        hasEnded = spinUntil([&] { return sibling->hasEnded(); }, std::chrono::seconds(5));
    });
    sibling = observe(m_session->get(server.url()));
    ASSERT_TRUE(server.reply(kOk));
    ASSERT_TRUE(server.reply(kOk));
    ASSERT_TRUE(spinUntil([&] { return hasEnded.has_value(); }));
    EXPECT_TRUE(*hasEnded);
}

} // namespace
} // namespace orvanta
