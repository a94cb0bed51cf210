// SPDX-License-Identifier: MIT
#include "unit/runtime/updater_fixture.h"

#include "orvanta_build_constants.h"

namespace orvanta {

class UpdaterInstallation : public UpdaterTest {
protected:
    void SetUp() override {
        makeStore("1.3.2");
        serve(channel);
    }
    /// The archive holds a complete runtime below `root` ("" or "/name").
    void pack(const char* root) { world.archives.contents.addRuntime(QString::fromLatin1(root)); }

    const QString destination = versionDirectory(QStringLiteral("1.4.0"));
    const std::string work = "staging/1.4.0-00000000-0000-4000-8000-000000000001";
    fakes::FakeChannel channel{QStringLiteral("1.4.0")};
};

TEST_F(UpdaterInstallation, ARuntimeAtTheTopIsCopied) {
    pack("");
    EXPECT_EQ(update(), "ok: Updated to 1.4.0");
    EXPECT_EQ(changes(),
              (std::vector<std::string>{
                  "* create " + work, "* write " + work + "/runtime.zip",
                  "* remove " + work + "/runtime.zip", "* copy " + work + " " + work + "-copy",
                  "* create versions", "* move " + work + "-copy versions/1.4.0",
                  "* create versions/1.4.0", "* write versions/1.4.0/runtime.json",
                  "create " + inStore(QString()).chopped(1).toStdString(), "write current.json",
                  "* remove " + inStore(QStringLiteral("staging"))
                                    .toStdString()
                                    .substr(inStore(QString()).toStdString().size())}));
    EXPECT_TRUE(updater.isValidRuntimeRoot(destination));
    EXPECT_FALSE(world.files.itemExists(destination + QStringLiteral("/runtime.zip")));
}

TEST_F(UpdaterInstallation, ARuntimeInOneDirectoryIsMoved) {
    pack("/any-name");
    EXPECT_EQ(update(), "ok: Updated to 1.4.0");
    EXPECT_THAT(changes(), ::testing::Contains("* move " + work + "/any-name versions/1.4.0"));
    EXPECT_THAT(changes(), ::testing::Not(::testing::Contains(::testing::HasSubstr("* copy"))));
    EXPECT_TRUE(updater.isValidRuntimeRoot(destination));
}

TEST_F(UpdaterInstallation, OfTwoDirectoriesTheCompleteOneIsInstalled) {
    pack("/a");
    pack("/b");
    world.archives.contents.remove(QStringLiteral("/a/local-server/server.js"));
    world.archives.contents.addFile(QStringLiteral("/README"));
    EXPECT_EQ(update(), "ok: Updated to 1.4.0");
    EXPECT_THAT(changes(), ::testing::Contains("* move " + work + "/b versions/1.4.0"));
}

TEST_F(UpdaterInstallation, ALinkToADirectoryIsNotInstalledInItsPlace) {
    pack("/a");
    pack("/b");
    const QString scratch = inStore(QString::fromStdString(work));
    world.files.links[scratch + QStringLiteral("/a")] = scratch + QStringLiteral("/b");
    EXPECT_EQ(update(), "ok: Updated to 1.4.0");
    EXPECT_THAT(changes(), ::testing::Contains("* move " + work + "/b versions/1.4.0"));
}

TEST_F(UpdaterInstallation, OfTwoCompleteDirectoriesTheFirstListedIsInstalled) {
    pack("/a");
    pack("/b");
    world.files.listsBackwards = true;
    update();
    EXPECT_THAT(changes(), ::testing::Contains("* move " + work + "/b versions/1.4.0"));
}

TEST_F(UpdaterInstallation, TheToolGetsTheArchiveAsItWasDownloadedOffTheMainThread) {
    pack("");
    update();
    ASSERT_EQ(world.archives.extractions.size(), 1U);
    const auto& extraction = world.archives.extractions.front();
    EXPECT_EQ(extraction.destination, inStore(QString::fromStdString(work)));
    EXPECT_EQ(extraction.archive, extraction.destination + QStringLiteral("/runtime.zip"));
    EXPECT_EQ(extraction.bytes, "an archive");
    EXPECT_TRUE(extraction.inBackground);
}

TEST_F(UpdaterInstallation, ManifestAndArchiveAreAskedForOnceEach) {
    pack("");
    update();
    ASSERT_EQ(world.http.requests.size(), 2U);
    const auto& download = world.http.requests.back();
    EXPECT_EQ(download.url, channel.archiveUrl);
    EXPECT_EQ(download.method, "GET");
    EXPECT_TRUE(download.isShared);
}

TEST_F(UpdaterInstallation, TheRecordIsSwitched) {
    auto before = stateOf("1.3.2");
    before.previousVersion = QStringLiteral("1.3.1");
    before.lastHealthyVersion = QStringLiteral("1.3.0");
    before.lastCheckedAt = QStringLiteral("checked");
    before.availableVersion = QStringLiteral("1.4.0");
    before.updatedAt = QStringLiteral("updated");
    before.lastHealthyAt = QStringLiteral("healthy");
    before.pendingHealthCheck = false;
    writeState(before);
    configure(R"({"channel":"stable"})");
    pack("");
    update();
    EXPECT_EQ(world.files.bytesOf(currentJson()), "{\n"
                                                  "  \"channel\" : \"stable\",\n"
                                                  "  \"currentVersion\" : \"1.4.0\",\n"
                                                  "  \"lastCheckedAt\" : \"checked\",\n"
                                                  "  \"lastHealthyAt\" : \"healthy\",\n"
                                                  "  \"lastHealthyVersion\" : \"1.3.0\",\n"
                                                  "  \"pendingHealthCheck\" : true,\n"
                                                  "  \"previousVersion\" : \"1.3.2\",\n"
                                                  "  \"updatedAt\" : \"2026-11-15T21:37:51Z\"\n"
                                                  "}");
    EXPECT_FALSE(world.files.itemExists(inStore(QStringLiteral("staging"))));
    EXPECT_TRUE(updater.isValidRuntimeRoot(versionDirectory(QStringLiteral("1.3.2"))));
}

TEST_F(UpdaterInstallation, AnArchiveMayBeFarLargerThanAManifest) {
    pack("");
    update();
    ASSERT_EQ(world.http.requests.size(), 2U);
    EXPECT_GT(world.http.requests.back().largestBody, qsizetype{1024} * 1024 * 1024);
}

TEST_F(UpdaterInstallation, TheVersionOfferedIsForgotten) {
    check();
    ASSERT_EQ(available(), "1.4.0");
    pack("");
    update();
    EXPECT_EQ(available(), "(none)");
}

TEST_F(UpdaterInstallation, ARuntimeWithoutARecordGetsOneAtItsRoot) {
    pack("");
    channel.platform = channel.platform.toUpper();
    serve(channel);
    update();
    EXPECT_EQ(world.files.bytesOf(destination + QStringLiteral("/runtime.json")),
              QByteArray("{\n  \"arch\" : \"") + build::kArch +
                  "\",\n"
                  "  \"builtAt\" : \"2026-11-15T21:37:51Z\",\n"
                  "  \"platform\" : \"" +
                  build::kPlatform +
                  "\",\n"
                  "  \"version\" : \"1.4.0\"\n"
                  "}");
    EXPECT_FALSE(
        world.files.itemExists(destination + QStringLiteral("/local-server/runtime.json")));
}

TEST_F(UpdaterInstallation, ARecordThatTheArchiveBringsIsKept) {
    pack("/wrapper");
    world.archives.contents.addFile(QStringLiteral("/wrapper/runtime.json"), "its own");
    update();
    EXPECT_EQ(world.files.bytesOf(destination + QStringLiteral("/runtime.json")), "its own");
}

TEST_F(UpdaterInstallation, ARecordInsideTheLocalServerIsNoRecordOfTheRoot) {
    pack("/wrapper");
    world.archives.contents.addFile(QStringLiteral("/wrapper/local-server/runtime.json"), "inner");
    update();
    EXPECT_EQ(world.files.bytesOf(destination + QStringLiteral("/local-server/runtime.json")),
              "inner");
    EXPECT_TRUE(world.files.itemExists(destination + QStringLiteral("/runtime.json")));
}

TEST_F(UpdaterInstallation, AnUpperCaseDigestMatches) {
    pack("");
    channel.sha256 = channel.sha256.toUpper();
    serve(channel);
    EXPECT_EQ(update(), "ok: Updated to 1.4.0");
}

TEST_F(UpdaterInstallation, AVersionDirectoryThatExistsIsReplaced) {
    pack("/w");
    world.files.addFile(destination + QStringLiteral("/old"));
    update();
    EXPECT_FALSE(world.files.itemExists(destination + QStringLiteral("/old")));
    EXPECT_TRUE(updater.isValidRuntimeRoot(destination));
}

TEST_F(UpdaterInstallation, SlashesAndColonsInTheVersionBecomeUnderscores) {
    pack("");
    channel.version = QStringLiteral("2.3/beta:1");
    serve(channel);
    EXPECT_EQ(update(), "ok: Updated to 2.3/beta:1");
    EXPECT_EQ(world.archives.extractions.front().destination,
              inStore(QStringLiteral("staging/2.3_beta_1-00000000-0000-4000-8000-000000000001")));
    EXPECT_TRUE(updater.isValidRuntimeRoot(versionDirectory(QStringLiteral("2.3_beta_1"))));
    EXPECT_EQ(recorded().currentVersion.toStdString(), "2.3/beta:1");
}

TEST_F(UpdaterInstallation, LeftOversOfFailedInstallationsAreRemoved) {
    pack("");
    world.files.addFile(inStore(QStringLiteral("staging/1.3.9-OLD/runtime.zip")));
    update();
    EXPECT_FALSE(world.files.itemExists(inStore(QStringLiteral("staging"))));
}

TEST_F(UpdaterInstallation, StagingThatCannotBeRemovedIsNoFailure) {
    pack("");
    world.files.failures["removeItem " + inStore(QStringLiteral("staging")).toStdString()] =
        QStringLiteral("Busy.");
    EXPECT_EQ(update(), "ok: Updated to 1.4.0");
    EXPECT_TRUE(world.files.itemExists(inStore(QStringLiteral("staging"))));
}

TEST_F(UpdaterInstallation, ARecordThatCannotBeWrittenIsNoFailureAndKeepsTheOldVersion) {
    pack("");
    check();
    const auto before = recorded();
    world.files.failures["writeFile " + currentJson().toStdString()] = QStringLiteral("Full.");
    EXPECT_EQ(update(), "ok: Updated to 1.4.0");
    EXPECT_EQ(recorded(), before);
    EXPECT_EQ(available(), "(none)");
    EXPECT_FALSE(world.files.itemExists(inStore(QStringLiteral("staging"))));
}

TEST_F(UpdaterInstallation, WithoutANewerVersionNothingIsTouched) {
    for (const char* version : {"1.3.2", "1.3.2.0", "1.3.1"}) {
        serve("1.4.0");
        check();
        const QByteArray before = world.files.bytesOf(currentJson());
        world.files.changes.clear();
        serve(version);
        EXPECT_EQ(update(), "ok: Current (1.3.2)");
        EXPECT_EQ(available(), "(none)");
        EXPECT_EQ(world.files.bytesOf(currentJson()), before);
        EXPECT_TRUE(changes().empty());
    }
}

TEST_F(UpdaterInstallation, AMissingRecordIsSeededBeforeAnUpdate) {
    world.files.items.erase(currentJson());
    ship("1.2.0");
    pack("");
    EXPECT_EQ(update(), "ok: Updated to 1.4.0");
    EXPECT_EQ(recorded().previousVersion.value().toStdString(), "1.2.0");
}

TEST_F(UpdaterInstallation, AManifestIsInstalledNewerOrNot) {
    pack("");
    const auto manifest =
        MacRuntimeManifest::decode(fakes::FakeChannel(QStringLiteral("1.0.0")).manifest());
    EXPECT_EQ(told(run(updater.applyManifest(manifest, updater.loadSettings()))),
              "ok: Updated to 1.0.0");
    EXPECT_EQ(recorded().previousVersion.value().toStdString(), "1.3.2");
}

TEST_F(UpdaterInstallation, AVersionSpeltLikeTheRunningOneTakesItsDirectory) {
    makeStore("1.4-a:b");
    world.files.addRuntime(versionDirectory(QStringLiteral("1.4-a_b")));
    world.files.addFile(versionDirectory(QStringLiteral("1.4-a_b/old")));
    channel.version = QStringLiteral("1.4-a_b"); // newer: "_" comes after ":"
    serve(channel);
    pack("/w");
    EXPECT_EQ(update(), "ok: Updated to 1.4-a_b");
    EXPECT_EQ(recorded().currentVersion.toStdString(), "1.4-a_b");
    EXPECT_EQ(recorded().previousVersion.value().toStdString(), "1.4-a:b");
    EXPECT_FALSE(world.files.itemExists(versionDirectory(QStringLiteral("1.4-a_b/old"))));
    EXPECT_TRUE(updater.isValidRuntimeRoot(versionDirectory(QStringLiteral("1.4-a_b"))));
}

TEST_F(UpdaterInstallation, OnlyTheStoresRecordIsReadAndWrittenOnTheMainThread) {
    pack("/w");
    update();
    ship("1.9.0");
    ASSERT_EQ(resolve(), "1.9.0 at versions/1.9.0");
    EXPECT_TRUE(world.files.reads.contains(currentJson()));
    for (const QString& read : world.files.reads) {
        EXPECT_FALSE(read.startsWith(QStringLiteral("* "))) << read.toStdString();
    }
    const std::string store = inStore(QString()).chopped(1).toStdString();
    for (const std::string& change : changes()) {
        const bool isOfCurrentJson = change == "write current.json" || change == "create " + store;
        EXPECT_EQ(change.starts_with("* "), !isOfCurrentJson) << change;
    }
    EXPECT_THAT(changes(), ::testing::Contains("* write versions/1.4.0/runtime.json"));
    EXPECT_THAT(changes(), ::testing::Contains(::testing::HasSubstr(" versions/1.9.0")));
}

} // namespace orvanta
