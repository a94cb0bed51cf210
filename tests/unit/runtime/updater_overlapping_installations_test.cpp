// SPDX-License-Identifier: MIT
// Two installations at once: a mandatory one at a launch and one that was asked for.
#include "unit/runtime/updater_overlap.h"

namespace orvanta {

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

TEST_F(OverlappingInstallations, ThreeThatWaitForOneVersionPlaceItOnce) {
    beginBoth();
    const auto direct =
        begin(updater.applyManifest(MacRuntimeManifest::decode(channel.manifest()), {}));
    world.background.holdsJobs = true;
    for (const std::size_t request : {1U, 3U, 4U}) {
        answer(request, channel.archive);
    }
    for (int digest = 0; digest < 3; ++digest) {
        releaseJob();
    }
    ASSERT_EQ(world.background.heldCount(), 3U); // one places, two wait
    releaseAllJobs();
    expectOneSwitch();
    EXPECT_TRUE(direct->value.value().succeeded);
    EXPECT_EQ(world.archives.extractions.size(), 1U);
}

TEST_F(OverlappingInstallations, ThreeThatWaitForOneVersionEachTryUntilOneSucceeds) {
    beginBoth();
    const auto direct =
        begin(updater.applyManifest(MacRuntimeManifest::decode(channel.manifest()), {}));
    world.background.holdsJobs = true;
    for (const std::size_t request : {1U, 3U, 4U}) {
        answer(request, channel.archive);
    }
    world.archives.exitStatus = 1;
    while (!asked->value) {
        releaseJob();
    }
    EXPECT_TRUE(launch->error);
    EXPECT_FALSE(asked->value->succeeded);
    world.archives.exitStatus = 0;
    releaseAllJobs();
    EXPECT_TRUE(direct->value.value().succeeded);
    EXPECT_EQ(world.archives.extractions.size(), 3U);
    EXPECT_EQ(recorded().currentVersion.toStdString(), "1.4.0");
    EXPECT_EQ(recorded().previousVersion.value().toStdString(), "1.3.2");
}

/// While an update to 1.4.0 waits for its archive, another version becomes current.
class OvertakenUpdate : public UpdaterOverlap {
protected:
    void SetUp() override {
        UpdaterOverlap::SetUp();
        outcome = begin(updater.applyAvailableUpdate());
        answer(0, channel.manifest());
    }
    void become(const char* version) {
        makeStore(version);
        answer(1, channel.archive);
    }
    std::shared_ptr<Outcome<MacRuntimeUpdateResult>> outcome;
};

TEST_F(OvertakenUpdate, ByANewerVersionDoesNotGoBackBehindIt) {
    become("1.5.0");
    EXPECT_EQ(told(outcome->value.value()), "ok: Current (1.5.0)");
    EXPECT_EQ(available(), "(none)");
    EXPECT_EQ(recorded(), stateOf("1.5.0"));
    EXPECT_TRUE(world.archives.extractions.empty());
}

TEST_F(OvertakenUpdate, ByANewerVersionWhileItIsPlacedIsNotSwitchedTo) {
    placeWhileBecoming(1, "1.5.0");
    EXPECT_EQ(told(outcome->value.value()), "ok: Current (1.5.0)");
    EXPECT_EQ(available(), "(none)");
    EXPECT_EQ(recorded(), stateOf("1.5.0"));
    EXPECT_EQ(world.archives.extractions.size(), 1U);
    EXPECT_FALSE(world.files.itemExists(inStore(QStringLiteral("staging"))));
}

TEST_F(OvertakenUpdate, ByANewerVersionWhileItIsPlacedIsPrunedWithTheNextConfirmation) {
    placeWhileBecoming(1, "1.5.0");
    ASSERT_TRUE(updater.isValidRuntimeRoot(versionDirectory(QStringLiteral("1.4.0"))));
    updater.markRuntimeHealthy(std::nullopt);
    EXPECT_FALSE(world.files.itemExists(versionDirectory(QStringLiteral("1.4.0"))));
}

TEST_F(OvertakenUpdate, ByAnOlderVersionWhileItIsPlacedGoesOn) {
    placeWhileBecoming(1, "1.3.9");
    EXPECT_EQ(told(outcome->value.value()), "ok: Updated to 1.4.0");
    EXPECT_EQ(recorded().previousVersion.value().toStdString(), "1.3.9");
}

TEST_F(OvertakenUpdate, ByAVersionThatIsStillOlderGoesOn) {
    become("1.3.9");
    EXPECT_EQ(told(outcome->value.value()), "ok: Updated to 1.4.0");
    EXPECT_EQ(recorded().previousVersion.value().toStdString(), "1.3.9");
}

TEST_F(OvertakenUpdate, WithoutTheRecordGoesOnWithTheOneItKnows) {
    world.files.addFile(currentJson(), "{");
    answer(1, channel.archive);
    EXPECT_EQ(told(outcome->value.value()), "ok: Updated to 1.4.0");
}

TEST_F(UpdaterOverlap, WhatAManifestNamesIsInstalledAlsoOverANewerVersion) {
    const auto outcome =
        begin(updater.applyManifest(MacRuntimeManifest::decode(channel.manifest()), {}));
    makeStore("1.5.0");
    answer(0, channel.archive);
    EXPECT_EQ(told(outcome->value.value()), "ok: Updated to 1.4.0");
    EXPECT_EQ(recorded().previousVersion.value().toStdString(), "1.5.0");
}

TEST_F(UpdaterOverlap, WhatAManifestNamesIsSwitchedToAlsoWhenANewerVersionCameWhileItWasPlaced) {
    const auto outcome =
        begin(updater.applyManifest(MacRuntimeManifest::decode(channel.manifest()), {}));
    placeWhileBecoming(0, "1.5.0");
    EXPECT_EQ(told(outcome->value.value()), "ok: Updated to 1.4.0");
    EXPECT_EQ(recorded().previousVersion.value().toStdString(), "1.5.0");
}

} // namespace orvanta
