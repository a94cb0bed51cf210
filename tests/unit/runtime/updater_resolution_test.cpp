// SPDX-License-Identifier: MIT
#include "unit/runtime/updater_fixture.h"

namespace orvanta {

using UpdaterResolution = UpdaterTest;

TEST_F(UpdaterResolution, TheFirstResolutionSeedsTheStoreAndRunsFromIt) {
    ship("1.4.0");
    EXPECT_EQ(resolve(), "1.4.0 at versions/1.4.0");
}

TEST_F(UpdaterResolution, TheCurrentVersionIsNamedByItsDirectoryName) {
    world.files.addRuntime(versionDirectory(QStringLiteral("1.2_3")));
    writeState(stateOf("1.2:3"));
    EXPECT_EQ(resolve(), "1.2:3 at versions/1.2_3");
}

class SwitchedOff : public UpdaterTest, public ::testing::WithParamInterface<const char*> {};

TEST_P(SwitchedOff, TheShippedRuntimeIsUsedWhateverTheStoreHolds) {
    makeStore("1.4.0");
    ship("9.0.0");
    world.environment.values.set("ORVANTA_RUNTIME_UPDATES_ENABLED", GetParam());
    EXPECT_EQ(resolve(), "shipped");
    EXPECT_EQ(status(), "Runtime updater disabled; using bundled runtime.");
    EXPECT_TRUE(changes().empty());
    EXPECT_TRUE(requests().empty());
    EXPECT_FALSE(world.files.reads.contains(currentJson()));
}

INSTANTIATE_TEST_SUITE_P(Values, SwitchedOff, ::testing::Values("0", "false", "False"));

TEST_F(UpdaterResolution, TheFileCanSwitchTheStoreOff) {
    configure(R"({"enabled":false})");
    EXPECT_EQ(resolve(), "shipped");
    EXPECT_TRUE(changes().empty());
}

TEST_F(UpdaterResolution, AnIncompleteCurrentVersionFallsBackToTheShippedRuntime) {
    makeStore("1.4.0");
    world.files.remove(versionDirectory(QStringLiteral("1.4.0/local-server/public/index3.html")));
    EXPECT_EQ(resolve(), "shipped");
    EXPECT_EQ(status(), "Runtime 1.4.0 is incomplete; using bundled runtime.");
}

TEST_F(UpdaterResolution, AStoreThatCannotBeRecordedFallsBackWithoutAMessageOfItsOwn) {
    ship("1.4.0");
    configure(R"({"checkOnStartup":false})");
    world.files.failures["writeFile " + currentJson().toStdString()] = QStringLiteral("Full.");
    EXPECT_EQ(resolve(), "shipped");
    EXPECT_EQ(status(), "Seeded 1.4.0");
}

TEST_F(UpdaterResolution, ABrokenRecordIsReplacedBySeeding) {
    ship("1.4.0");
    world.files.addFile(currentJson(), R"({"currentVersion":"1.0.0"})");
    EXPECT_EQ(resolve(), "1.4.0 at versions/1.4.0");
}

TEST_F(UpdaterResolution, AReadOfTheRecordThatFailsOnceLosesNothing) {
    ship("1.4.0");
    makeStore("2.0.0");
    world.files.failingReads[currentJson()] = 1;
    EXPECT_EQ(resolve(), "2.0.0 at versions/2.0.0");
    EXPECT_EQ(world.background.jobCount, 0);
}

TEST_F(UpdaterResolution, SeedingAndPromotionFailuresEndTheResolution) {
    world.files.failures["copyItem"] = QStringLiteral("Disk full.");
    EXPECT_EQ(errorOf(updater.resolveLaunchConfiguration()), "fake 1: Disk full.");
    makeStore("1.0.0");
    ship("2.0.0");
    EXPECT_EQ(errorOf(updater.resolveLaunchConfiguration()), "fake 1: Disk full.");
    EXPECT_TRUE(requests().empty());
}

TEST_F(UpdaterResolution, ANewerShippedRuntimeIsPromotedAtEveryResolution) {
    makeStore("1.0.0");
    ship("1.4.0");
    EXPECT_EQ(resolve(), "1.4.0 at versions/1.4.0");
    ship("1.5.0");
    EXPECT_EQ(resolve(), "1.5.0 at versions/1.5.0");
    EXPECT_EQ(recorded().previousVersion.value().toStdString(), "1.4.0");
}

TEST_F(UpdaterResolution, WithoutACheckAtStartNothingIsFetched) {
    makeStore("1.4.0");
    configure(R"({"checkOnStartup":false})");
    EXPECT_EQ(resolve(), "1.4.0 at versions/1.4.0");
    EXPECT_TRUE(requests().empty());
    EXPECT_TRUE(changes().empty());
}

TEST_F(UpdaterResolution, AFetchThatFailsIsSilent) {
    makeStore("1.4.0");
    EXPECT_EQ(resolve(), "1.4.0 at versions/1.4.0");
    EXPECT_EQ(requests().size(), 1U);
    EXPECT_EQ(recorded(), stateOf("1.4.0"));
    EXPECT_THAT(status(), ::testing::StartsWith("Runtime manifest check failed: "));
}

TEST_F(UpdaterResolution, TheCheckAtStartIsRecorded) {
    makeStore("1.4.0");
    serve("1.5.0");
    EXPECT_EQ(resolve(), "1.4.0 at versions/1.4.0");
    auto expected = stateOf("1.4.0");
    expected.lastCheckedAt = QString::fromLatin1(kNow);
    expected.availableVersion = QStringLiteral("1.5.0");
    EXPECT_EQ(recorded(), expected);
    EXPECT_EQ(available(), "1.5.0");
    EXPECT_EQ(status(), "(none)");

    serve("1.4");
    resolve();
    expected.availableVersion = std::nullopt;
    EXPECT_EQ(recorded(), expected);
    EXPECT_EQ(available(), "(none)");
}

TEST_F(UpdaterResolution, ACheckThatCannotBeRecordedIsNoFailure) {
    makeStore("1.4.0");
    serve("1.5.0");
    world.files.failures["writeFile"] = QStringLiteral("Full.");
    EXPECT_EQ(resolve(), "1.4.0 at versions/1.4.0");
    EXPECT_EQ(available(), "1.5.0");
}

class RequiredUpdate : public UpdaterTest {
protected:
    void SetUp() override {
        makeStore("1.4.0");
        world.archives.contents.addRuntime(QString());
    }
    void demand(const char* minimum, const char* offered) {
        channel.version = QString::fromLatin1(offered);
        channel.minRuntimeVersion = QString::fromLatin1(minimum);
        serve(channel);
    }
    fakes::FakeChannel channel{QStringLiteral("2.0.0")};
};

TEST_F(RequiredUpdate, IsInstalledBeforeTheLaunch) {
    demand("1.5.0", "2.0.0");
    EXPECT_EQ(resolve(), "2.0.0 at versions/2.0.0");
    EXPECT_EQ(status(), "Updated to 2.0.0");
    EXPECT_EQ(recorded().previousVersion.value().toStdString(), "1.4.0");
    EXPECT_EQ(recorded().lastCheckedAt.value().toStdString(), kNow);
    EXPECT_EQ(recorded().availableVersion, std::nullopt);
    EXPECT_TRUE(recorded().pendingHealthCheck.value());
}

TEST_F(RequiredUpdate, IsNotNeededWhenTheMinimumIsMetOrEmpty) {
    for (const char* minimum : {"1.4.0", "1.3", "1.4.0-rc.1", ""}) {
        demand(minimum, "2.0.0");
        EXPECT_EQ(resolve(), "1.4.0 at versions/1.4.0") << minimum;
    }
    EXPECT_EQ(world.archives.extractions.size(), 0U);
}

TEST_F(RequiredUpdate, AnEmptyMinimumIsNoneEvenForAVersionBelowEveryNumber) {
    makeStore("0-rc.1");
    demand("", "2.0.0");
    EXPECT_EQ(resolve(), "0-rc.1 at versions/0-rc.1");
}

TEST_F(RequiredUpdate, InstallsWhateverIsOfferedEvenIfThatIsNotNewer) {
    demand("1.5.0", "1.0.0");
    EXPECT_EQ(resolve(), "1.0.0 at versions/1.0.0");
    EXPECT_EQ(status(), "Updated to 1.0.0");
}

TEST_F(RequiredUpdate, ThatFailsStartsNothing) {
    channel.sha256 = QStringLiteral("00");
    demand("1.5.0", "2.0.0");
    EXPECT_EQ(errorOf(updater.resolveLaunchConfiguration()),
              "OrvantaMacRuntimeUpdater 1: Required runtime update failed: Runtime archive "
              "checksum did not match the manifest.");
    EXPECT_EQ(status(), "Runtime archive checksum did not match the manifest.");
    EXPECT_EQ(recorded().currentVersion.toStdString(), "1.4.0");
}

TEST_F(RequiredUpdate, IsAnnouncedWhileItRuns) {
    demand("1.5.0", "2.0.0");
    world.background.holdsJobs = true;
    const auto outcome = begin(updater.resolveLaunchConfiguration());
    EXPECT_EQ(status(), "Required runtime update to 2.0.0...");
    EXPECT_FALSE(outcome->value);
}

TEST_F(RequiredUpdate, IsMeasuredAgainstThePromotedRuntime) {
    ship("1.6.0");
    demand("1.5.0", "2.0.0");
    EXPECT_EQ(resolve(), "1.6.0 at versions/1.6.0");
}

TEST_F(UpdaterResolution, TheCurrentConfigurationNeedsARecord) {
    EXPECT_EQ(updater.currentLaunchConfiguration(), std::nullopt);
    EXPECT_EQ(status(), "(none)");
}

} // namespace orvanta
