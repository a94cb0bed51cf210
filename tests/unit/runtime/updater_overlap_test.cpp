// SPDX-License-Identifier: MIT
// A launch, a watch or the status poll comes in while another operation waits.
#include "unit/runtime/updater_overlap.h"

namespace orvanta {

TEST_F(UpdaterOverlap, AConfirmationDuringACheckIsNotUndone) {
    const auto outcome = begin(updater.checkForUpdates());
    updater.markRuntimeHealthy(std::nullopt);
    answer(0, channel.manifest());
    ASSERT_TRUE(outcome->value);
    EXPECT_EQ(recorded().pendingHealthCheck, false);
    EXPECT_EQ(recorded().lastHealthyVersion.value().toStdString(), "1.3.2");
    EXPECT_EQ(recorded().availableVersion.value().toStdString(), "1.4.0");
}

TEST_F(UpdaterOverlap, ARollbackDuringACheckIsNotUndone) {
    begin(updater.checkForUpdates());
    updater.rollback();
    answer(0, channel.manifest());
    EXPECT_EQ(recorded().currentVersion.toStdString(), "1.3.1");
    EXPECT_EQ(recorded().previousVersion.value().toStdString(), "1.3.2");
}

TEST_F(UpdaterOverlap, ARollbackDuringAResolutionIsNotUndone) {
    const auto outcome = begin(updater.resolveLaunchConfiguration());
    updater.rollback();
    answer(0, channel.manifest());
    EXPECT_EQ(recorded().currentVersion.toStdString(), "1.3.1");
    EXPECT_EQ(outcome->value.value().version.value().toStdString(), "1.3.1");
}

TEST_F(UpdaterOverlap, ARollbackDuringADownloadIsWhatTheUpdateIsBasedOn) {
    begin(updater.applyAvailableUpdate());
    answer(0, channel.manifest());
    updater.rollback();
    answer(1, channel.archive);
    EXPECT_EQ(status(), "Updated to 1.4.0");
    EXPECT_EQ(recorded().currentVersion.toStdString(), "1.4.0");
    EXPECT_EQ(recorded().previousVersion.value().toStdString(), "1.3.1");
}

TEST_F(UpdaterOverlap, ARollbackDuringAPromotionIsWhatThePromotionIsBasedOn) {
    ship("1.9.0");
    world.background.holdsJobs = true;
    begin(updater.promoteBundledRuntimeIfNewer(recorded()));
    updater.rollback();
    releaseJob();
    EXPECT_EQ(recorded().currentVersion.toStdString(), "1.9.0");
    EXPECT_EQ(recorded().previousVersion.value().toStdString(), "1.3.1");
}

TEST_F(UpdaterOverlap, ANewerVersionInstalledDuringAPromotionStays) {
    ship("1.9.0");
    world.background.holdsJobs = true;
    const auto outcome = begin(updater.promoteBundledRuntimeIfNewer(recorded()));
    auto newer = stateOf("2.0.0");
    writeState(newer);
    releaseJob();
    EXPECT_EQ(outcome->value, newer);
    EXPECT_EQ(recorded(), newer);
}

TEST_F(UpdaterOverlap, APromotionHeldInMemoryOutlivesTheFetch) {
    ship("1.9.0");
    const std::string write = "writeFile " + currentJson().toStdString();
    world.files.failures[write] = QStringLiteral("Full.");
    begin(updater.resolveLaunchConfiguration());
    world.files.failures.clear();
    answer(0, channel.manifest());
    EXPECT_EQ(recorded().currentVersion.toStdString(), "1.9.0");
    EXPECT_EQ(recorded().lastCheckedAt.value().toStdString(), kNow);
}

TEST_F(UpdaterOverlap, AVersionThatIsBeingPlacedIsNotPruned) {
    begin(updater.applyAvailableUpdate());
    answer(0, channel.manifest());
    world.background.holdsJobs = true;
    answer(1, channel.archive);
    releaseJob();                  // the digest
    world.background.releaseOne(); // in place, and not yet in the record
    ASSERT_EQ(recorded().currentVersion.toStdString(), "1.3.2");
    updater.markRuntimeHealthy(std::nullopt);
    world.queue.runUntilIdle();
    EXPECT_EQ(recorded().currentVersion.toStdString(), "1.4.0");
    EXPECT_TRUE(updater.isValidRuntimeRoot(versionDirectory(QStringLiteral("1.4.0"))));
}

TEST_F(UpdaterOverlap, AVersionThatWasPlacedIsPrunedLikeAnyOther) {
    channel.sha256 = QString();
    begin(updater.applyAvailableUpdate());
    answer(0, channel.manifest());
    answer(1, channel.archive);
    world.files.addRuntime(versionDirectory(QStringLiteral("1.4.0")));
    updater.markRuntimeHealthy(std::nullopt);
    EXPECT_FALSE(world.files.itemExists(versionDirectory(QStringLiteral("1.4.0"))));
}

TEST_F(UpdaterOverlap, APromotedVersionIsNotPrunedBeforeItIsRecorded) {
    ship("1.9.0");
    world.background.holdsJobs = true;
    begin(updater.promoteBundledRuntimeIfNewer(recorded()));
    world.background.releaseOne();
    updater.markRuntimeHealthy(std::nullopt);
    world.queue.runUntilIdle();
    EXPECT_EQ(recorded().currentVersion.toStdString(), "1.9.0");
    EXPECT_TRUE(updater.isValidRuntimeRoot(versionDirectory(QStringLiteral("1.9.0"))));
}

TEST_F(UpdaterOverlap, TwoSeedingsAtOnceCopyOnce) {
    world.files.items.erase(currentJson());
    world.background.holdsJobs = true;
    begin(updater.seedBootstrapRuntime(QStringLiteral("beta")));
    begin(updater.seedBootstrapRuntime(QStringLiteral("beta")));
    ASSERT_EQ(world.background.heldCount(), 2U);
    releaseJob();
    world.files.changes.clear();
    releaseJob();
    EXPECT_THAT(changes(), ::testing::Not(::testing::Contains(::testing::StartsWith("* "))));
    EXPECT_EQ(recorded().currentVersion.toStdString(), "bootstrap");
}

TEST_F(UpdaterOverlap, ARecordWrittenDuringASeedingStays) {
    world.files.items.erase(currentJson());
    world.background.holdsJobs = true;
    const auto outcome = begin(updater.seedBootstrapRuntime(QStringLiteral("beta")));
    writeState(stateOf("2.0.0"));
    releaseJob();
    EXPECT_EQ(outcome->value, stateOf("2.0.0"));
    EXPECT_EQ(recorded(), stateOf("2.0.0"));
    EXPECT_EQ(status(), "(none)");
}

TEST_F(UpdaterOverlap, TreesAreCopiedByTheWorkerWhileTheMainThreadGoesOn) {
    world.files.items.erase(currentJson());
    world.background.holdsJobs = true;
    const auto outcome = begin(updater.resolveLaunchConfiguration());
    EXPECT_TRUE(changes().empty());
    EXPECT_EQ(told(updater.rollback()), "failed: No previous runtime is available.");
    releaseJob();
    std::vector<std::string> onTheMainThread;
    int byTheWorker = 0;
    for (const std::string& change : changes()) {
        if (change.starts_with("* ")) {
            ++byTheWorker;
        } else {
            onTheMainThread.push_back(change);
        }
    }
    EXPECT_THAT(onTheMainThread,
                ::testing::ElementsAre(::testing::StartsWith("create "), "write current.json"));
    EXPECT_GT(byTheWorker, 4);
}

} // namespace orvanta
