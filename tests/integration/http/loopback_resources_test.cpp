// SPDX-License-Identifier: MIT
#include "integration/http/loopback_test.h"
#include "integration/http/plain_listener.h"
#include "integration/open_descriptors.h"

#include <QDir>

#include <fcntl.h>

namespace orvanta {
namespace {

using LoopbackResources = LoopbackTest;

TEST_F(LoopbackResources, NoDescriptorStaysOpen) {
    ScriptedServer server(replyWith(kOk));
    ScriptedServer closing(replyAndClose(""));
    ScriptedServer silent([](QTcpSocket&) {});
    const auto impatient = sessionWith(0.01, 20);
    outcomeOf(m_session->get(server.url()));
    spinFor(std::chrono::milliseconds(50));
    const auto before = openDescriptors().size();
    for (int i = 0; i < 500; ++i) {
        ASSERT_EQ(outcomeOf(m_session->get(server.url())).status(), 200);
        if (i % 10 == 0) {
            ASSERT_TRUE(outcomeOf(m_session->post(closing.url())).error);
            ASSERT_TRUE(outcomeOf(impatient->post(silent.url())).error);
        }
    }
    EXPECT_TRUE(
        spinUntil([&] { return openDescriptors().size() <= before; }, std::chrono::seconds(2)))
        << openDescriptors().size() << " instead of " << before;
}

TEST_F(LoopbackResources, ConnectionsAreNotInheritedByChildren) {
    ScriptedServer server([](QTcpSocket&) {});
    const auto before = openDescriptors();
    const auto outcome = observe(m_session->get(server.url()));
    ASSERT_TRUE(spinUntil([&] { return server.requests() == 1; }));
    int opened = 0;
    for (const int descriptor : openDescriptors()) {
        if (before.count(descriptor) == 0) {
            ++opened;
            EXPECT_NE(fcntl(descriptor, F_GETFD) & FD_CLOEXEC, 0) << descriptor;
        }
    }
    EXPECT_GE(opened, 2);
    EXPECT_FALSE(outcome->hasEnded());
}

#ifdef __linux__

TEST_F(LoopbackResources, NoThreadIsNeeded) {
    ScriptedServer server([](QTcpSocket&) {});
    const auto threads = [] {
        return QDir(QStringLiteral("/proc/self/task")).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    };
    const auto before = threads();
    const auto outcome = observe(m_session->get(server.url()));
    EXPECT_EQ(threads(), before);
    ASSERT_TRUE(spinUntil([&] {
        EXPECT_EQ(threads(), before);
        return server.requests() == 1;
    }));
    EXPECT_FALSE(outcome->hasEnded());
}

TEST_F(LoopbackResources, ConnectionThatIsNeverMadeFailsAtTheIdleLimit) {
    PlainListener listener(0);
    listener.fillQueue();
    const auto outcome = outcomeOf(sessionWith(0.4, 20)->post(listener.url()));
    EXPECT_EQ(outcome.code(), 28);
    EXPECT_GE(outcome.seconds, 0.398);
    EXPECT_LT(outcome.seconds, 2);
}

#endif

} // namespace
} // namespace orvanta
