// SPDX-License-Identifier: MIT
// A launch, a watch or the status poll comes in while another operation waits.
#include "unit/runtime/updater_fixture.h"

namespace orvanta {

class UpdaterOverlap : public UpdaterTest {
protected:
    void SetUp() override {
        makeStore("1.3.2");
        world.files.addRuntime(versionDirectory(QStringLiteral("1.3.1")));
        auto state = stateOf("1.3.2");
        state.previousVersion = QStringLiteral("1.3.1");
        state.pendingHealthCheck = true;
        writeState(state);
        world.archives.contents.addRuntime(QStringLiteral("/w"));
        world.http.respond = [](const fakes::FakeRequest&) { return std::nullopt; };
    }
    void answer(std::size_t request, const QByteArray& body) {
        world.http.answer(request, {200, body});
        world.queue.runUntilIdle();
    }
    void releaseJob() {
        world.background.releaseOne();
        world.queue.runUntilIdle();
    }

    fakes::FakeChannel channel{QStringLiteral("1.4.0")};
};

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

TEST_F(UpdaterOverlap, TheMainThreadIsFreeWhileTreesAreCopied) {
    world.files.items.erase(currentJson());
    world.background.holdsJobs = true;
    const auto outcome = begin(updater.resolveLaunchConfiguration());
    EXPECT_FALSE(outcome->value);
    EXPECT_TRUE(changes().empty());
}

/// A mandatory update at a launch and one that was asked for: both install the same version.
class OverlappingInstallations : public UpdaterOverlap {
protected:
    void SetUp() override {
        UpdaterOverlap::SetUp();
        channel.minRuntimeVersion = QStringLiteral("1.4.0");
    }
    /// Both have the manifest and wait for the archive, requests 1 and 3.
    void beginBoth() {
        launch = begin(updater.resolveLaunchConfiguration());
        answer(0, channel.manifest());
        asked = begin(updater.applyAvailableUpdate());
        answer(2, channel.manifest());
        ASSERT_EQ(requests().size(), 4U);
    }
    /// Both archives have come, and their digests are found good.
    void beginBothPlacements() {
        beginBoth();
        world.background.holdsJobs = true;
        answer(1, channel.archive);
        answer(3, channel.archive);
        releaseJob();
        releaseJob();
    }
    void releaseAllJobs() {
        while (world.background.heldCount() > 0) {
            releaseJob();
        }
    }
    void expectOneSwitch() const {
        EXPECT_EQ(launch->value.value().version.value().toStdString(), "1.4.0");
        EXPECT_EQ(told(asked->value.value()), "ok: Updated to 1.4.0");
        EXPECT_EQ(recorded().currentVersion.toStdString(), "1.4.0");
        EXPECT_EQ(recorded().previousVersion.value().toStdString(), "1.3.2");
        EXPECT_TRUE(updater.isValidRuntimeRoot(placed));
        EXPECT_THAT(changes(), ::testing::Not(::testing::Contains("* remove versions/1.4.0")));
    }

    std::shared_ptr<Outcome<MacRuntimeLaunchConfiguration>> launch;
    std::shared_ptr<Outcome<MacRuntimeUpdateResult>> asked;
    const QString placed = versionDirectory(QStringLiteral("1.4.0"));
};

TEST_F(OverlappingInstallations, TheSecondFindsTheVersionInPlaceAndKeepsWhereARollbackGoes) {
    beginBoth();
    answer(1, channel.archive);
    ASSERT_TRUE(launch->value);
    updater.markRuntimeHealthy(launch->value);
    answer(3, channel.archive);
    expectOneSwitch();
    EXPECT_EQ(recorded().pendingHealthCheck, false);
    EXPECT_EQ(world.archives.extractions.size(), 1U);
}

TEST_F(OverlappingInstallations, OneWaitsForTheOtherToRecordWhatItPlaces) {
    beginBothPlacements();
    releaseAllJobs();
    expectOneSwitch();
    EXPECT_EQ(world.archives.extractions.size(), 1U);
    EXPECT_TRUE(updater.rollback().succeeded);
    EXPECT_EQ(recorded().currentVersion.toStdString(), "1.3.2");
}

TEST_F(OverlappingInstallations, TheSecondPlacesTheVersionWhenTheFirstCouldNot) {
    beginBothPlacements();
    world.archives.exitStatus = 1;
    releaseJob();
    ASSERT_TRUE(launch->error);
    world.archives.exitStatus = 0;
    releaseAllJobs();
    EXPECT_EQ(told(asked->value.value()), "ok: Updated to 1.4.0");
    EXPECT_EQ(recorded().previousVersion.value().toStdString(), "1.3.2");
}

TEST_F(OverlappingInstallations, AVersionThatWasDamagedMeanwhileIsPlacedAgain) {
    beginBoth();
    answer(1, channel.archive);
    world.files.remove(placed + QStringLiteral("/local-server/server.js"));
    answer(3, channel.archive);
    EXPECT_EQ(told(asked->value.value()), "ok: Updated to 1.4.0");
    EXPECT_TRUE(updater.isValidRuntimeRoot(placed));
    EXPECT_EQ(recorded().previousVersion.value().toStdString(), "1.3.2");
}

TEST_F(OverlappingInstallations, AnUpdateToTheVersionThatIsBeingPromotedReplacesNothing) {
    ship("1.4.0");
    asked = begin(updater.applyAvailableUpdate());
    answer(0, channel.manifest());
    world.background.holdsJobs = true;
    answer(1, channel.archive);
    begin(updater.promoteBundledRuntimeIfNewer(recorded()));
    releaseAllJobs();
    EXPECT_EQ(told(asked->value.value()), "ok: Updated to 1.4.0");
    EXPECT_EQ(recorded().previousVersion.value().toStdString(), "1.3.2");
    EXPECT_TRUE(world.archives.extractions.empty());
}

TEST_F(OverlappingInstallations, APromotionToTheVersionThatIsBeingInstalledWaitsForIt) {
    world.files.addRuntime(placed); // complete, so that the promotion has nothing to copy
    ship("1.4.0");
    asked = begin(updater.applyAvailableUpdate());
    answer(0, channel.manifest());
    world.background.holdsJobs = true;
    answer(1, channel.archive);
    releaseJob(); // the digest
    const auto promotion = begin(updater.promoteBundledRuntimeIfNewer(recorded()));
    EXPECT_FALSE(promotion->value);
    EXPECT_EQ(recorded().currentVersion.toStdString(), "1.3.2");
    releaseAllJobs();
    EXPECT_EQ(promotion->value.value(), recorded());
    EXPECT_EQ(recorded().currentVersion.toStdString(), "1.4.0");
    EXPECT_EQ(recorded().previousVersion.value().toStdString(), "1.3.2");
    EXPECT_EQ(recorded().pendingHealthCheck, true);
}

} // namespace orvanta
