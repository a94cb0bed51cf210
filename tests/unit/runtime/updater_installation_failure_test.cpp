// SPDX-License-Identifier: MIT
#include "unit/runtime/updater_fixture.h"

#include <functional>
#include <ostream>

namespace orvanta {

class FailedInstallation : public UpdaterTest {
protected:
    void SetUp() override {
        makeStore("1.3.2");
        world.archives.contents.addRuntime(QStringLiteral("/w"));
    }
    const QString destination = versionDirectory(QStringLiteral("1.4.0"));
    const QString work =
        inStore(QStringLiteral("staging/1.4.0-00000000-0000-4000-8000-000000000001"));
    fakes::FakeChannel channel{QStringLiteral("1.4.0")};
};

TEST_F(FailedInstallation, WithoutARecordThatCanBeReadNothingIsDownloaded) {
    const auto manifest = MacRuntimeManifest::decode(channel.manifest());
    world.files.addFile(currentJson(), R"({"currentVersion":"1.3.2"})");
    EXPECT_EQ(told(run(updater.applyManifest(manifest, {}))),
              "failed: Could not load runtime state.");
    world.files.items.erase(currentJson());
    EXPECT_EQ(told(run(updater.applyManifest(manifest, {}))),
              "failed: Could not load runtime state.");
    EXPECT_TRUE(requests().empty());
    EXPECT_TRUE(changes().empty());
}

TEST_F(FailedInstallation, AnArchiveAddressThatDoesNotParseIsNotAskedFor) {
    for (const char* url : {"not a url", "https://bad host/a.zip", "a.zip", "/a.zip"}) {
        channel.archiveUrl = QString::fromLatin1(url);
        serve(channel);
        EXPECT_EQ(update(), "failed: Runtime archive URL is invalid.") << url;
    }
    EXPECT_EQ(requests().size(), 4U);
    EXPECT_TRUE(changes().empty());
}

TEST_F(FailedInstallation, AnArchiveThatCannotBeDownloadedIsReported) {
    channel.archiveStatus = 0;
    serve(channel);
    EXPECT_EQ(update(), "failed: Runtime update failed: https://files.example/runtime.zip could "
                        "not be reached.");
    EXPECT_TRUE(changes().empty());
}

TEST_F(FailedInstallation, AnotherDigestEndsItBeforeAnythingIsWritten) {
    for (const auto& digest : {QString(), QStringLiteral("00"), channel.sha256.chopped(1),
                               channel.sha256 + QLatin1Char(' ')}) {
        channel.sha256 = digest;
        serve(channel);
        EXPECT_EQ(update(), "failed: Runtime archive checksum did not match the manifest.");
    }
    EXPECT_TRUE(changes().empty());
}

TEST_F(FailedInstallation, AnErrorPageFailsTheDigestAndNotTheTransfer) {
    channel.archive = "<html>Not found</html>";
    channel.archiveStatus = 404;
    serve(channel);
    EXPECT_EQ(update(), "failed: Runtime archive checksum did not match the manifest.");
}

TEST_F(FailedInstallation, TheStatusOfTheDownloadIsNotLookedAt) {
    channel.archiveStatus = 404;
    serve(channel);
    EXPECT_EQ(update(), "ok: Updated to 1.4.0");
}

struct Contents {
    const char* name;
    std::function<void(fakes::FakeFiles&)> change;
};

void PrintTo(const Contents& contents, std::ostream* stream) {
    *stream << contents.name;
}

class NoRuntime : public FailedInstallation, public ::testing::WithParamInterface<Contents> {};

TEST_P(NoRuntime, InTheArchiveLeavesTheWorkDirectoryAndTheDestination) {
    GetParam().change(world.archives.contents);
    world.files.addFile(destination + QStringLiteral("/old"));
    serve(channel);
    EXPECT_EQ(update(), "failed: Runtime archive does not contain local-server and node-runtime.");
    EXPECT_TRUE(world.files.isDirectory(work));
    EXPECT_FALSE(world.files.itemExists(work + QStringLiteral("/runtime.zip")));
    EXPECT_TRUE(world.files.itemExists(destination + QStringLiteral("/old")));
    EXPECT_EQ(recorded(), stateOf("1.3.2"));
}

INSTANTIATE_TEST_SUITE_P(
    Contents, NoRuntime,
    ::testing::Values(Contents{"Nothing", [](auto& files) { files.items.clear(); }},
                      Contents{"WithoutAPage",
                               [](auto& files) {
                                   files.remove(
                                       QStringLiteral("/w/local-server/public/index3.html"));
                               }},
                      Contents{"NodeNotExecutable",
                               [](auto& files) {
                                   files.addFile(QStringLiteral("/w/node-runtime/node"), "node",
                                                 false);
                               }},
                      Contents{"TwoLevelsDown",
                               [](auto& files) {
                                   files.items.clear();
                                   files.addRuntime(QStringLiteral("/w/deeper"));
                               }}),
    [](const auto& test) { return test.param.name; });

TEST_F(FailedInstallation, AWorkDirectoryThatCannotBeListedHoldsNoRuntime) {
    world.files.failures["contentsOfDirectory"] = QStringLiteral("No.");
    serve(channel);
    EXPECT_EQ(update(), "failed: Runtime archive does not contain local-server and node-runtime.");
}

TEST_F(FailedInstallation, AnEntryThatIsNoDirectoryIsPassedOver) {
    world.archives.contents.items.at(QStringLiteral("/w")).isDirectory = false;
    serve(channel);
    EXPECT_EQ(update(), "failed: Runtime archive does not contain local-server and node-runtime.");
}

/// A copy that silently loses a file, as a failing disk would.
class LossyPlacement : public FailedInstallation {
protected:
    struct LossyFiles : fakes::FakeFiles {
        void moveItem(const QString& from, const QString& to) override {
            FakeFiles::moveItem(from, to);
            remove(to + QStringLiteral("/local-server/server.js"));
        }
    };
};

TEST_F(LossyPlacement, WhatWasPlacedIncompleteIsRemovedAgain) {
    LossyFiles files;
    files.items = world.files.items;
    fakes::FakeArchiveTool tool(files);
    tool.contents = world.archives.contents;
    Platform platform{world.queue,
                      world.processes,
                      world.http,
                      world.serialQueues,
                      files,
                      world.locations,
                      world.environment,
                      world.wallClock,
                      world.loginItem,
                      world.browser,
                      world.application,
                      world.output,
                      world.background,
                      tool,
                      world.identifiers,
                      world.digest};
    MacRuntimeUpdater lossy(world.locations.resourceRoot(), world.stateRoot(), platform);
    serve(channel);
    const auto result = run(lossy.applyAvailableUpdate());
    EXPECT_FALSE(result.succeeded);
    EXPECT_EQ(result.message.toStdString(), "Runtime archive was extracted but failed validation.");
    EXPECT_EQ(lossy.lastStatus(), result.message);
    EXPECT_FALSE(files.itemExists(destination));
    EXPECT_TRUE(files.isDirectory(work));
    EXPECT_EQ(lossy.currentState(), stateOf("1.3.2"));

    files.failures["removeItem " + destination.toStdString()] = QStringLiteral("Busy.");
    EXPECT_EQ(run(lossy.applyAvailableUpdate()).message.toStdString(),
              "Runtime update failed: Busy.");
}

TEST_F(FailedInstallation, TheToolsExitStatusIsTheReason) {
    world.archives.exitStatus = 1;
    serve(channel);
    EXPECT_EQ(update(), "failed: Runtime update failed: ditto failed to extract runtime archive.");
    EXPECT_TRUE(world.files.itemExists(work + QStringLiteral("/runtime.zip")));
}

TEST_F(FailedInstallation, AWrapperThatRefersToItsNeighboursCountsAsNotExtracted) {
    world.archives.entangled = {QStringLiteral("w")};
    world.files.addFile(destination + QStringLiteral("/old"));
    serve(channel);
    EXPECT_EQ(update(), "failed: Runtime update failed: ditto failed to extract runtime archive.");
    EXPECT_TRUE(world.files.itemExists(destination + QStringLiteral("/old")));
    EXPECT_TRUE(world.files.isDirectory(work));
    EXPECT_EQ(recorded(), stateOf("1.3.2"));
}

TEST_F(FailedInstallation, AToolThatCannotBeStartedIsTheReason) {
    world.archives.refusal = QStringLiteral("No such tool.");
    serve(channel);
    EXPECT_EQ(update(), "failed: Runtime update failed: No such tool.");
}

struct BrokenStep {
    const char* operation; ///< "%1" is the work directory, "%2" the destination, "%3" its parent
    bool workIsLeft;
    bool destinationIsLeft;
};

void PrintTo(const BrokenStep& step, std::ostream* stream) {
    *stream << step.operation;
}

class BrokenInstallation : public FailedInstallation,
                           public ::testing::WithParamInterface<BrokenStep> {};

TEST_P(BrokenInstallation, IsReportedAndChangesNoRecord) {
    const QString operation =
        QString::fromLatin1(GetParam().operation)
            .replace(QStringLiteral("%1"), work)
            .replace(QStringLiteral("%2"), destination)
            .replace(QStringLiteral("%3"), versionDirectory(QString()).chopped(1));
    world.files.addFile(work + QStringLiteral("/left"));
    world.files.addFile(destination + QStringLiteral("/old"));
    world.files.failures[operation.toStdString()] = QStringLiteral("Disk full.");
    serve(channel);
    EXPECT_EQ(update(), "failed: Runtime update failed: Disk full.");
    EXPECT_EQ(recorded(), stateOf("1.3.2"));
    EXPECT_EQ(world.files.itemExists(work), GetParam().workIsLeft);
    EXPECT_EQ(world.files.itemExists(destination), GetParam().destinationIsLeft);
}

INSTANTIATE_TEST_SUITE_P(Steps, BrokenInstallation,
                         ::testing::Values(BrokenStep{"removeItem %1", true, true},
                                           BrokenStep{"createDirectory %1", false, true},
                                           BrokenStep{"writeFile %1/runtime.zip", true, true},
                                           BrokenStep{"removeItem %1/runtime.zip", true, true},
                                           BrokenStep{"moveItem %1-replaced", true, true},
                                           BrokenStep{"createDirectory %3", true, true},
                                           BrokenStep{"moveItem %2", true, false},
                                           BrokenStep{"createDirectory %2", true, true},
                                           BrokenStep{"writeFile %2/runtime.json", true, true}));

TEST_F(FailedInstallation, ATopLevelRuntimeThatCannotBeCopiedIsReported) {
    world.archives.contents.items.clear();
    world.archives.contents.addRuntime(QString());
    world.files.failures["copyItem"] = QStringLiteral("Disk full.");
    serve(channel);
    EXPECT_EQ(update(), "failed: Runtime update failed: Disk full.");
    EXPECT_EQ(recorded(), stateOf("1.3.2"));
}

TEST_F(FailedInstallation, AVersionThatCannotNameADirectoryNeverReachesTheFiles) {
    for (const QString& version :
         {QStringLiteral("."), QStringLiteral(".."), QString(QChar::Null)}) {
        channel.version = version;
        const auto manifest = MacRuntimeManifest::decode(channel.manifest());
        serve(channel);
        EXPECT_THAT(told(run(updater.applyManifest(manifest, {}))),
                    ::testing::StartsWith("failed: Runtime update failed: The version \""));
    }
    EXPECT_TRUE(changes().empty());
}

} // namespace orvanta
