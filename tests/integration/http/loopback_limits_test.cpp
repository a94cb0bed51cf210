// SPDX-License-Identifier: MIT
#include "integration/http/loopback_test.h"
#include "integration/http/plain_listener.h"

#include <cmath>
#include <limits>
#include <thread>

namespace orvanta {
namespace {

using LoopbackLimits = LoopbackTest;

constexpr int kTimedOut = 28;
constexpr double kSlack = 0.002; ///< the observation starts a little after the call
const QByteArray kHeadOf30 = "HTTP/1.1 200 OK\r\nContent-Length: 30\r\n\r\n";

TEST_F(LoopbackLimits, ServerThatFallsSilentFailsAtTheIdleLimit) {
    ScriptedServer server(replyWith(kHeadOf30));
    const auto outcome = outcomeOf(sessionWith(0.4, 20)->get(server.url()));
    EXPECT_EQ(outcome.code(), kTimedOut);
    EXPECT_EQ(
        outcome.description(),
        QStringLiteral("The server at %1 did not respond for 0.4 s.").arg(server.authority()));
    EXPECT_GE(outcome.seconds, 0.4 - kSlack);
    EXPECT_LT(outcome.seconds, 2);
}

TEST_F(LoopbackLimits, ServerThatNeverAnswersFailsAtTheIdleLimit) {
    ScriptedServer server([](QTcpSocket&) {});
    const auto outcome = outcomeOf(sessionWith(0.4, 20)->post(server.url()));
    EXPECT_EQ(outcome.code(), kTimedOut);
    EXPECT_GE(outcome.seconds, 0.4 - kSlack);
    EXPECT_LT(outcome.seconds, 2);
    EXPECT_EQ(server.requests(), 1);
}

TEST_F(LoopbackLimits, ServerThatNeverAcceptsFailsAtTheIdleLimit) {
    ScriptedServer server(replyWith(kOk));
    server.stopAccepting();
    const auto outcome = outcomeOf(sessionWith(0.4, 20)->post(server.url()));
    EXPECT_EQ(outcome.code(), kTimedOut);
    EXPECT_GE(outcome.seconds, 0.4 - kSlack);
    EXPECT_LT(outcome.seconds, 2);
    EXPECT_EQ(server.connections(), 0);
}

TEST_F(LoopbackLimits, DrippingServerFailsAtTheWholeLimit) {
    ScriptedServer server(replyAndDrip(kHeadOf30, QByteArray(30, 'x')));
    const auto outcome = outcomeOf(sessionWith(0.5, 1)->get(server.url()));
    EXPECT_EQ(outcome.code(), kTimedOut);
    EXPECT_EQ(outcome.description(),
              QStringLiteral("The server at %1 did not complete its reply within 1 s.")
                  .arg(server.authority()));
    EXPECT_GE(outcome.seconds, 1 - kSlack);
    EXPECT_LT(outcome.seconds, 2.5);
}

TEST_F(LoopbackLimits, DrippingBodyIsNotIdle) {
    ScriptedServer server(replyAndDrip(kHeadOf30, QByteArray(30, 'x')));
    const auto outcome = outcomeOf(sessionWith(0.5, 20)->get(server.url()));
    EXPECT_EQ(outcome.status(), 200);
    EXPECT_EQ(outcome.reply.value().body, QByteArray(30, 'x'));
    EXPECT_GE(outcome.seconds, 1.4);
}

TEST_F(LoopbackLimits, DrippingHeaderLineIsNotIdle) {
    ScriptedServer server(
        replyAndDrip("HTTP/1.1 204 None\r\n", "X-Long: " + QByteArray(20, 'x') + "\r\n\r\n"));
    const auto outcome = outcomeOf(sessionWith(0.5, 20)->post(server.url()));
    EXPECT_EQ(outcome.status(), 204);
    EXPECT_GE(outcome.seconds, 1.4);
}

TEST_F(LoopbackLimits, HugeLimitsDoNotOverflow) {
    ScriptedServer server(replyWith(kOk));
    for (const double huge : {1e6, 1e9, 1e18, 1e300, std::numeric_limits<double>::infinity()}) {
        EXPECT_EQ(outcomeOf(sessionWith(huge, huge)->get(server.url())).status(), 200) << huge;
    }
    EXPECT_EQ(outcomeOf(sessionWith(0.3, 1e300)->get(server.url())).status(), 200);
    ScriptedServer silent([](QTcpSocket&) {});
    const auto outcome = outcomeOf(sessionWith(0.3, 1e300)->get(silent.url()));
    EXPECT_EQ(outcome.code(), kTimedOut);
    EXPECT_GE(outcome.seconds, 0.3 - kSlack);
}

TEST_F(LoopbackLimits, TinyLimitsFailSoon) {
    ScriptedServer silent([](QTcpSocket&) {});
    for (const double tiny : {1e-300, 1e-9, 0.0, -1.0, std::nan("")}) {
        const auto byIdle = outcomeOf(sessionWith(tiny, 20)->get(silent.url()));
        EXPECT_EQ(byIdle.code(), kTimedOut) << tiny;
        EXPECT_LT(byIdle.seconds, 1) << tiny;
        const auto byWhole = outcomeOf(sessionWith(20, tiny)->get(silent.url()));
        EXPECT_EQ(byWhole.code(), kTimedOut) << tiny;
        EXPECT_LT(byWhole.seconds, 1) << tiny;
    }
}

TEST_F(LoopbackLimits, LoopThatWasHeldUpIsNotHeldAgainstTheServer) {
    PlainListener server(1);
    const auto outcome = observe(sessionWith(0.2, 20)->get(server.url()));
    ASSERT_TRUE(server.reply(kOk));
    std::this_thread::sleep_for(std::chrono::milliseconds(400));
    ASSERT_TRUE(spinUntil([&] { return outcome->hasEnded(); }));
    EXPECT_EQ(outcome->status(), 200);
}

} // namespace
} // namespace orvanta
