// SPDX-License-Identifier: MIT
#include "platform/posix/signal_watch.h"

#include "integration/terminal/main_loop.h"

#include <gmock/gmock.h>

namespace orvanta {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class Signals : public testing::Test {
protected:
    ~Signals() override {
        for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
            std::signal(signal, SIG_DFL);
        }
    }
    auto noteIn() {
        return [this](int signal) { seen.push_back(signal); };
    }

    std::vector<int> seen;
};

TEST_F(Signals, ArriveOnTheMainLoop) {
    SignalWatch watch(noteIn());
    watch.watch(SIGTERM);
    watch.watchUnlessIgnored(SIGHUP);
    std::raise(SIGTERM);
    std::raise(SIGHUP);
    EXPECT_THAT(seen, IsEmpty());
    ASSERT_TRUE(waitUntil([this] { return seen.size() == 2; }));
    EXPECT_THAT(seen, ElementsAre(SIGTERM, SIGHUP));
}

TEST_F(Signals, AnIgnoredHangUpStaysIgnored) {
    std::signal(SIGHUP, SIG_IGN);
    SignalWatch watch(noteIn());
    watch.watchUnlessIgnored(SIGHUP);
    std::raise(SIGHUP);
    settle();
    EXPECT_THAT(seen, IsEmpty());
}

TEST_F(Signals, OthersAreTakenThoughIgnoredAndBlocked) {
    std::signal(SIGINT, SIG_IGN);
    sigset_t interrupt;
    sigemptyset(&interrupt);
    sigaddset(&interrupt, SIGINT);
    ASSERT_EQ(::pthread_sigmask(SIG_BLOCK, &interrupt, nullptr), 0);
    SignalWatch watch(noteIn());
    watch.watch(SIGINT);
    std::raise(SIGINT);
    EXPECT_TRUE(waitUntil([this] { return seen.size() == 1; }));
}

TEST_F(Signals, GoBackToWhoeverHadThem) {
    std::signal(SIGTERM, SIG_IGN);
    {
        SignalWatch watch(noteIn());
        watch.watch(SIGTERM);
    }
    std::raise(SIGTERM);
    settle();
    EXPECT_THAT(seen, IsEmpty());
}

TEST_F(Signals, AFloodNeitherBlocksNorGetsLost) {
    SignalWatch watch(noteIn());
    watch.watch(SIGTERM);
    for (int index = 0; index < 100'000; ++index) {
        std::raise(SIGTERM);
    }
    EXPECT_TRUE(waitUntil([this] { return !seen.empty(); }));
}

} // namespace
} // namespace orvanta
