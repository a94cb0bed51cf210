// SPDX-License-Identifier: MIT
#include "integration/http_shared/curl_test.h"

#include <vector>

namespace orvanta {
namespace {

using CurlLifetime = CurlTest;

ScriptedServer::Answer silence() {
    return [](QTcpSocket&) {};
}

TEST_F(CurlLifetime, CallReturnsAtOnceAndEndsOnALaterTurn) {
    ScriptedServer server(replyWith(kOk));
    const auto good = observe(m_session->get(server.url()));
    const auto bad = observe(m_session->get(QStringLiteral("http://127.0.0.1:99999/")));
    EXPECT_FALSE(good->hasEnded());
    EXPECT_FALSE(bad->hasEnded());
    EXPECT_TRUE(spinUntil([&] { return good->hasEnded() && bad->hasEnded(); }));
}

TEST_F(CurlLifetime, CallReturnsAtOnceAlsoWhenCurlIsNotEvenStarted) {
    const auto notOfTheWeb = observe(m_session->get(QStringLiteral("file:///x")));
    EXPECT_FALSE(notOfTheWeb->hasEnded());
    EXPECT_TRUE(spinUntil([&] { return notOfTheWeb->hasEnded(); }));
    use(20, m_folder.filePath(QStringLiteral("missing")));
    const auto notThere = observe(m_session->get(QStringLiteral("http://127.0.0.1:1/")));
    EXPECT_FALSE(notThere->hasEnded());
    EXPECT_TRUE(spinUntil([&] { return notThere->hasEnded(); }));
}

TEST_F(CurlLifetime, TwentyExchangesAtOnce) {
    ScriptedServer server(replyWith(kOk));
    std::vector<std::shared_ptr<ExchangeOutcome>> outcomes;
    for (int i = 0; i < 20; ++i) {
        outcomes.push_back(
            observe(i % 2 == 0 ? m_session->get(server.url()) : m_session->post(server.url())));
    }
    for (const auto& outcome : outcomes) {
        ASSERT_TRUE(spinUntil([&] { return outcome->hasEnded(); }));
        EXPECT_EQ(outcome->status(), 200) << outcome->description().toStdString();
    }
    EXPECT_EQ(server.requests(), 20);
}

TEST_F(CurlLifetime, ExchangeOutlivesItsSession) {
    ScriptedServer server(replyAndDrip("HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\n", "drops"));
    const auto outcome = observe(m_session->get(server.url()));
    m_session.reset();
    ASSERT_TRUE(spinUntil([&] { return outcome->hasEnded(); }));
    EXPECT_EQ(outcome->status(), 200);
}

TEST_F(CurlLifetime, EndOfTheSessionsKillsWhatIsUnderWay) {
    ScriptedServer server(silence());
    const auto begun = observe(m_session->get(server.url()));
    ASSERT_TRUE(spinUntil([&] { return server.requests() == 1; }));
    const auto justCalled = observe(m_session->get(server.url()));
    m_sessions.reset();
    EXPECT_TRUE(begun->abandoned);
    EXPECT_TRUE(justCalled->abandoned);
    EXPECT_TRUE(observe(m_session->get(server.url()))->abandoned);
    EXPECT_TRUE(spinUntil([] { return !hasChildren(); }, std::chrono::seconds(5)));
    EXPECT_LE(server.requests(), 2);
}

TEST_F(CurlLifetime, EndOfTheSessionsMayComeAtAnyMoment) {
    ScriptedServer server(replyWith(kOk));
    for (int milliseconds = 0; milliseconds < 40; milliseconds += 2) {
        use(20);
        const auto outcome = observe(m_session->get(server.url()));
        spinFor(std::chrono::milliseconds(milliseconds));
        m_sessions.reset();
        EXPECT_TRUE(outcome->hasEnded()) << milliseconds;
    }
}

TEST_F(CurlLifetime, CallerMayEndTheSessionsAsItResumes) {
    ScriptedServer good(replyWith(kOk));
    ScriptedServer silent(silence());
    const auto sibling = observe(m_session->get(silent.url()));
    callAfter(m_session->get(good.url()), [this] { m_sessions.reset(); });
    ASSERT_TRUE(spinUntil([&] { return m_sessions == nullptr; }));
    EXPECT_TRUE(sibling->abandoned);
}

TEST_F(CurlLifetime, CallerMayTurnTheLoopAsItResumes) {
    ScriptedServer server(replyWith(kOk));
    ExchangeOutcome nested;
    callAfter(m_session->get(server.url()),
              [&] { nested = outcomeOf(m_session->get(server.url())); });
    const auto sibling = observe(m_session->get(server.url()));
    ASSERT_TRUE(spinUntil([&] { return nested.hasEnded() && sibling->hasEnded(); }));
    EXPECT_EQ(nested.status(), 200);
    EXPECT_EQ(sibling->status(), 200);
}

} // namespace
} // namespace orvanta
