// SPDX-License-Identifier: MIT
#include "base/completion.h"
#include "base/platform_error.h"
#include "base/task.h"

#include <gtest/gtest.h>

#include <deque>
#include <optional>

namespace orvanta {

namespace {

/// The least a task needs to be started on.
struct JobList {
    void post(std::function<void()> job) { jobs.push_back(std::move(job)); }
    void run() {
        while (!jobs.empty()) {
            const auto job = std::move(jobs.front());
            jobs.pop_front();
            job();
        }
    }
    std::deque<std::function<void()>> jobs;
};

Task<> awaitInto(Completion<int>::Waiter waiter, std::shared_ptr<std::optional<int>> result) {
    *result = co_await waiter;
}

/// Tells when it goes, as a local of an abandoned coroutine does.
struct Witness {
    explicit Witness(bool& isGone) : gone(isGone) {}
    Witness(const Witness&) = delete;
    Witness& operator=(const Witness&) = delete;
    ~Witness() { gone = true; }
    bool& gone;
};

Task<> inner(Completion<int>::Waiter waiter, bool* unwound) {
    const Witness witness(*unwound);
    co_await waiter;
}

Task<> outer(Completion<int>::Waiter waiter, bool* innerUnwound, bool* outerUnwound) {
    const Witness witness(*outerUnwound);
    auto waiting = inner(waiter, innerUnwound);
    co_await std::move(waiting);
    ADD_FAILURE() << "an abandoned task went on";
}

} // namespace

TEST(CompletionTest, TheWaiterResumesInsideTheDecision) {
    const Completion<int> completion;
    auto result = std::make_shared<std::optional<int>>();
    const auto task = awaitInto(completion.wait(), result);
    EXPECT_EQ(*result, std::nullopt);
    completion.decide(7);
    EXPECT_EQ(*result, 7);
}

TEST(CompletionTest, ADecisionBeforeTheWaitIsKept) {
    const Completion<int> completion;
    completion.decide(7);
    auto result = std::make_shared<std::optional<int>>();
    const auto task = awaitInto(completion.wait(), result);
    EXPECT_EQ(*result, 7);
}

TEST(CompletionTest, TheFirstDecisionCounts) {
    const Completion<int> completion;
    completion.decide(1);
    completion.decide(2);
    auto result = std::make_shared<std::optional<int>>();
    const auto task = awaitInto(completion.wait(), result);
    EXPECT_EQ(*result, 1);
}

TEST(CompletionTest, LosingTheLastProducerUnwindsTheWholeChain) {
    bool innerUnwound = false;
    bool outerUnwound = false;
    JobList queue;
    {
        auto completion = std::make_shared<Completion<int>>();
        startTask(queue, [waiter = completion->wait(), &innerUnwound, &outerUnwound] {
            return outer(waiter, &innerUnwound, &outerUnwound);
        });
        queue.run();
        const Completion<int> copy = *completion;
        completion.reset();
        EXPECT_FALSE(innerUnwound);
    }
    EXPECT_TRUE(innerUnwound);
    EXPECT_TRUE(outerUnwound);
}

TEST(StartTaskTest, TheBodyNeverRunsInsideItsCaller) {
    JobList queue;
    bool ran = false;
    startTask(queue, [&ran]() -> Task<> {
        ran = true;
        return [](int) -> Task<> { co_return; }(0);
    });
    EXPECT_FALSE(ran);
    queue.run();
    EXPECT_TRUE(ran);
}

TEST(BeginTaskTest, TheBodyRunsInsideItsCallerUpToItsFirstWait) {
    const Completion<int> completion;
    auto result = std::make_shared<std::optional<int>>();
    bool ran = false;
    beginTask([waiter = completion.wait(), result, &ran] {
        ran = true;
        return awaitInto(waiter, result);
    });
    EXPECT_TRUE(ran);
    EXPECT_EQ(*result, std::nullopt);
    completion.decide(7);
    EXPECT_EQ(*result, 7);
}

TEST(BeginTaskTest, TheCapturesOfTheBodyLiveUntilItHasEnded) {
    bool isGone = false;
    const Completion<int> completion;
    auto result = std::make_shared<std::optional<int>>();
    beginTask([witness = std::make_shared<Witness>(isGone), waiter = completion.wait(), result] {
        return awaitInto(waiter, result);
    });
    EXPECT_FALSE(isGone);
    completion.decide(7);
    EXPECT_TRUE(isGone);
}

TEST(StartTaskTest, AnEscapedErrorIsReportedOnStandardError) {
    JobList queue;
    startTask(queue, [] {
        return [](int) -> Task<> {
            throw PlatformError(QStringLiteral("test"), 1, QStringLiteral("It broke."));
            co_return;
        }(0);
    });
    ::testing::internal::CaptureStderr();
    queue.run();
    EXPECT_EQ(::testing::internal::GetCapturedStderr(),
              "orvanta-tray: a background task failed: It broke.\n");
}

TEST(StartTaskTest, AnAbandonedTaskEndsSilently) {
    JobList queue;
    auto completion = std::make_shared<Completion<int>>();
    auto result = std::make_shared<std::optional<int>>();
    startTask(queue, [waiter = completion->wait(), result] { return awaitInto(waiter, result); });
    queue.run();
    ::testing::internal::CaptureStderr();
    completion.reset();
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(*result, std::nullopt);
}

TEST(StartTaskTest, TheCapturesLiveUntilTheTaskEnds) {
    JobList queue;
    const Completion<int> completion;
    auto held = std::make_shared<int>(1);
    const std::weak_ptr<int> weak = held;
    startTask(queue, [waiter = completion.wait(), held = std::move(held)] {
        return [](Completion<int>::Waiter wait) -> Task<> { co_await wait; }(waiter);
    });
    queue.run();
    EXPECT_FALSE(weak.expired());
    completion.decide(1);
    EXPECT_TRUE(weak.expired());
}

} // namespace orvanta
