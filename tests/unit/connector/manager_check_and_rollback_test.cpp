// SPDX-License-Identifier: MIT
#include "unit/connector/manager_store_fixture.h"

#include <new>

namespace orvanta {

using ManagerCheck = ManagerStoreTest;
using ManagerRollbackCommand = ManagerStoreTest;
using Lines = std::vector<std::string>;

TEST_F(ManagerCheck, ShowsWhatTheChannelOffers) {
    startStore();
    watchLines();
    const auto ended = begin(manager->checkRuntimeUpdates(true));
    EXPECT_TRUE(*ended);
    EXPECT_EQ(line(), "Runtime: Update available: 1.4.0");
    EXPECT_THAT(lines, ::testing::Contains("Runtime: Checking..."));
    EXPECT_TRUE(manager->runtimeUpdateAvailable());
    EXPECT_TRUE(manager->runtimeCanRollback());
    EXPECT_FALSE(manager->runtimeUpdateInProgress());
    EXPECT_EQ(manager->lastError(), std::nullopt);

    channel.version = QStringLiteral("1.3.2");
    begin(manager->checkRuntimeUpdates(true));
    EXPECT_EQ(line(), "Runtime: Current (1.3.2)");
    EXPECT_FALSE(manager->runtimeUpdateAvailable());
}

TEST_F(ManagerCheck, ASecondOneDuringTheFirstDoesNothing) {
    startStore();
    world.http.respond = [](const fakes::FakeRequest&) { return std::nullopt; };
    const auto first = begin(manager->checkRuntimeUpdates(true));
    EXPECT_TRUE(manager->runtimeUpdateInProgress());
    EXPECT_EQ(line(), "Runtime: Checking...");
    EXPECT_TRUE(*begin(manager->checkRuntimeUpdates(true)));
    EXPECT_TRUE(*begin(manager->applyRuntimeUpdate()));
    EXPECT_TRUE(*begin(manager->rollbackRuntime()));
    EXPECT_EQ(manifestRequests(), 1);
    EXPECT_EQ(store(), "1.3.2 1.3.1 -");
    EXPECT_FALSE(*first);
    world.http.answer(0, {200, channel.manifest()});
    EXPECT_TRUE(*first);
    EXPECT_FALSE(manager->runtimeUpdateInProgress());
}

TEST_F(ManagerCheck, AFailureIsAnErrorOnlyWhenAskedFor) {
    startStore();
    begin(manager->startPairing());
    const QString before = error();
    channel.manifestStatus = 404;
    begin(manager->checkRuntimeUpdates(false));
    EXPECT_EQ(error(), before);
    EXPECT_EQ(line(), "Runtime: Runtime manifest was not available.");
    begin(manager->checkRuntimeUpdates(true));
    EXPECT_EQ(error(), QStringLiteral("Runtime manifest was not available."));
    EXPECT_EQ(line(), "Runtime: Runtime manifest was not available.");
    EXPECT_FALSE(manager->runtimeUpdateInProgress());
}

TEST_F(ManagerCheck, ASuccessLeavesAnEarlierErrorAlone) {
    startStore();
    begin(manager->startPairing());
    const QString before = error();
    begin(manager->checkRuntimeUpdates(true));
    EXPECT_EQ(error(), before);
}

TEST_F(ManagerCheck, RunsAtTheStartAndEverySixHours) {
    startManager();
    EXPECT_EQ(manifestRequests(), 1);
    EXPECT_EQ(line(), "Runtime: Update available: 1.4.0");
    advance(21'599);
    EXPECT_EQ(manifestRequests(), 1);
    advance(1);
    EXPECT_EQ(manifestRequests(), 2);
    EXPECT_EQ(manager->lastError(), std::nullopt);
}

TEST_F(ManagerCheck, AnErrorThatNobodyExpectsBlocksNoLaterCommand) {
    startStore();
    world.http.respond = [](const fakes::FakeRequest&) -> std::optional<HttpReply> {
        throw std::bad_alloc();
    };
    begin(manager->checkRuntimeUpdates(true));
    EXPECT_FALSE(manager->runtimeUpdateInProgress());
    begin(manager->applyRuntimeUpdate());
    EXPECT_FALSE(manager->runtimeUpdateInProgress());
    begin(manager->rollbackRuntime());
    EXPECT_TRUE(manager->runtimeUpdateInProgress());
    endChild();
    advance(1);
    EXPECT_FALSE(manager->runtimeUpdateInProgress());
    world.http.respond = [this](const fakes::FakeRequest& request) {
        return channel.reply(request);
    };
    begin(manager->checkRuntimeUpdates(true));
    EXPECT_EQ(line(), "Runtime: Update available: 1.4.0");
}

TEST_F(ManagerRollbackCommand, RestartsOntoThePreviousVersion) {
    startStore();
    watchLines();
    const auto ended = begin(manager->rollbackRuntime());
    EXPECT_EQ(line(), "Runtime: Rolling back...");
    EXPECT_EQ(store(), "1.3.1 1.3.2 -");
    EXPECT_TRUE(manager->runtimeUpdateInProgress());
    endChild();
    advance(0.5);
    EXPECT_EQ(launched(), (Lines{"1.3.2", "1.3.1"}));
    EXPECT_FALSE(*ended);
    isUp = true;
    advance(0.5);
    EXPECT_TRUE(*ended);
    EXPECT_EQ(line(), "Runtime: Rolled back to 1.3.1.");
    EXPECT_FALSE(manager->runtimeUpdateInProgress());
    EXPECT_EQ(manager->lastError(), std::nullopt);
}

TEST_F(ManagerRollbackCommand, ConfirmsNothingByItself) {
    startStore();
    const auto ended = begin(manager->rollbackRuntime());
    endChild();
    advance(10.5);
    EXPECT_TRUE(*ended);
    EXPECT_EQ(store(), "1.3.1 1.3.2 -");
    EXPECT_EQ(launched(), (Lines{"1.3.2", "1.3.1"}));
    EXPECT_EQ(line(), "Runtime: Rolled back to 1.3.1.");
}

TEST_F(ManagerRollbackCommand, WithoutAPreviousVersionIsReportedWithoutARestart) {
    record("1.3.2", std::nullopt, false);
    startStore();
    const auto ended = begin(manager->rollbackRuntime());
    EXPECT_TRUE(*ended);
    EXPECT_EQ(line(), "Runtime: No previous runtime is available.");
    EXPECT_EQ(error(), QStringLiteral("No previous runtime is available."));
    EXPECT_FALSE(manager->runtimeUpdateInProgress());
    EXPECT_FALSE(manager->runtimeCanRollback());
    advance(30);
    EXPECT_EQ(world.processes.last().terminateCount, 0);
}

} // namespace orvanta
