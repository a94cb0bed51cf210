// SPDX-License-Identifier: MIT
#include "platform/qt/background_work.h"

#include "base/platform_error.h"
#include "integration/run_loop.h"

#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QProcess>

#include <algorithm>
#include <atomic>
#include <memory>
#include <optional>
#include <semaphore>
#include <stdexcept>
#include <thread>
#include <vector>

namespace orvanta {
namespace {

/// How a call of `run` ended.
struct Ending {
    bool hasEnded = false;
    std::string thrown;
    std::thread::id thread;
};

Task<> observe(BackgroundWork& work, std::function<void()> job, std::shared_ptr<Ending> ending) {
    try {
        auto task = work.run(std::move(job));
        co_await std::move(task);
    } catch (const PlatformError& error) {
        ending->thrown = error.description().toStdString();
    } catch (const std::exception& error) {
        ending->thrown = error.what();
    } catch (int number) {
        ending->thrown = std::to_string(number);
    } catch (const TaskAbandoned&) {
        ending->thrown = "abandoned";
    }
    ending->thread = std::this_thread::get_id();
    ending->hasEnded = true;
}

class BackgroundWorkTest : public ::testing::Test {
protected:
    std::shared_ptr<Ending> start(std::function<void()> job) {
        auto ending = std::make_shared<Ending>();
        observe(*m_work, std::move(job), ending);
        return ending;
    }

    std::optional<QtBackgroundWork> m_work{std::in_place};
};

TEST_F(BackgroundWorkTest, RunsOnAnotherThreadAndReturnsToThisOne) {
    auto worker = std::make_shared<std::thread::id>();
    const auto ending = start([worker] { *worker = std::this_thread::get_id(); });
    EXPECT_FALSE(ending->hasEnded);
    ASSERT_TRUE(turnLoopUntil([&] { return ending->hasEnded; }));
    EXPECT_NE(*worker, std::this_thread::get_id());
    EXPECT_NE(*worker, std::thread::id());
    EXPECT_EQ(ending->thread, std::this_thread::get_id());
    EXPECT_EQ(ending->thrown, "");
}

TEST_F(BackgroundWorkTest, TheLoopTurnsMeanwhile) {
    auto go = std::make_shared<std::binary_semaphore>(0);
    const auto ending = start([go] { go->acquire(); });
    turnLoopFor(std::chrono::milliseconds(50));
    EXPECT_FALSE(ending->hasEnded);
    go->release();
    EXPECT_TRUE(turnLoopUntil([&] { return ending->hasEnded; }));
}

TEST_F(BackgroundWorkTest, RunsOneAtATimeInOrder) {
    auto order = std::make_shared<std::vector<int>>();
    auto atWork = std::make_shared<std::atomic<int>>(0);
    auto overlapped = std::make_shared<std::atomic<bool>>(false);
    std::shared_ptr<Ending> last;
    for (int i = 0; i < 100; ++i) {
        last = start([=] {
            *overlapped = *overlapped || ++*atWork != 1;
            order->push_back(i);
            std::this_thread::yield();
            --*atWork;
        });
    }
    ASSERT_TRUE(turnLoopUntil([&] { return last->hasEnded; }));
    EXPECT_FALSE(*overlapped);
    EXPECT_EQ(order->size(), 100U);
    EXPECT_TRUE(std::is_sorted(order->begin(), order->end()));
}

TEST_F(BackgroundWorkTest, CarriesOverWhatAJobThrows) {
    const auto platform =
        start([] { throw PlatformError(QStringLiteral("d"), 3, QStringLiteral("No disk.")); });
    const auto standard = start([] { throw std::runtime_error("standard"); });
    const auto odd = start([] { throw 7; });
    const auto fine = start([] {});
    ASSERT_TRUE(turnLoopUntil([&] { return fine->hasEnded; }));
    EXPECT_EQ(platform->thrown, "No disk.");
    EXPECT_EQ(standard->thrown, "standard");
    EXPECT_EQ(odd->thrown, "7");
    EXPECT_EQ(fine->thrown, "");
}

/// Runs a job that holds `held`, then notes whether that is gone.
Task<> runHolding(BackgroundWork& work, std::shared_ptr<void> held,
                  std::shared_ptr<std::atomic<bool>> isGone,
                  std::shared_ptr<std::optional<bool>> wasGone) {
    std::function<void()> job = [held = std::move(held)] {};
    auto task = work.run(std::move(job));
    co_await std::move(task);
    *wasGone = isGone->load();
}

TEST_F(BackgroundWorkTest, WhatAJobHoldsIsGoneBeforeItsCallerGoesOn) {
    auto isGone = std::make_shared<std::atomic<bool>>(false);
    std::shared_ptr<void> held(nullptr, [isGone](void*) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        *isGone = true;
    });
    auto wasGone = std::make_shared<std::optional<bool>>();
    runHolding(*m_work, std::move(held), isGone, wasGone);
    ASSERT_TRUE(turnLoopUntil([&] { return wasGone->has_value(); }));
    EXPECT_TRUE(**wasGone);
}

TEST_F(BackgroundWorkTest, ItsEndAbandonsCallersAndDropsJobsThatWait) {
    auto began = std::make_shared<std::binary_semaphore>(0);
    auto go = std::make_shared<std::binary_semaphore>(0);
    auto ended = std::make_shared<std::atomic<bool>>(false);
    auto secondRan = std::make_shared<std::atomic<bool>>(false);
    const auto running = start([=] {
        began->release();
        go->acquire();
        *ended = true;
    });
    const auto waiting = start([=] { *secondRan = true; });
    began->acquire();
    QElapsedTimer clock;
    clock.start();
    m_work.reset();
    EXPECT_LT(clock.elapsed(), 100);
    EXPECT_EQ(running->thrown, "abandoned");
    EXPECT_EQ(waiting->thrown, "abandoned");
    go->release();
    EXPECT_TRUE(waitUntil([&] { return ended->load(); }));
    turnLoopFor(std::chrono::milliseconds(50));
    EXPECT_FALSE(*secondRan);
}

Task<> runAgainAndAgain(BackgroundWork& work, std::function<void()> job,
                        std::shared_ptr<std::vector<std::string>> endings) {
    for (int i = 0; i < 50; ++i) {
        auto ending = std::make_shared<Ending>();
        auto once = observe(work, job, ending);
        co_await std::move(once);
        endings->push_back(ending->thrown);
    }
}

TEST_F(BackgroundWorkTest, ACallerWhoComesBackDuringItsEndIsAbandonedEachTime) {
    auto go = std::make_shared<std::binary_semaphore>(0);
    auto endings = std::make_shared<std::vector<std::string>>();
    std::function<void()> job = [go] { go->acquire(); };
    runAgainAndAgain(*m_work, job, endings);
    m_work.reset();
    EXPECT_EQ(*endings, std::vector<std::string>(50, "abandoned"));
    go->release();
}

TEST_F(BackgroundWorkTest, AProcessEndsAtOnceWhileAJobIsAtWork) {
    QProcess program;
    QElapsedTimer clock;
    clock.start();
    program.start(QStringLiteral(LEAVING_PROGRAM), QStringList());
    ASSERT_TRUE(program.waitForFinished(20000));
    EXPECT_EQ(program.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(program.exitCode(), 0);
    const QByteArray milliseconds = program.readAllStandardOutput().trimmed();
    EXPECT_FALSE(milliseconds.isEmpty());
    EXPECT_LT(milliseconds.toInt(), 200);
    EXPECT_LT(clock.elapsed(), 5000);
}

} // namespace
} // namespace orvanta
