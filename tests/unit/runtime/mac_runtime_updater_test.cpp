// SPDX-License-Identifier: MIT
#include "fakes/fake_world.h"
#include "runtime/mac_runtime_updater.h"

#include <gtest/gtest.h>

namespace orvanta {

namespace {

const QString kRoot = QStringLiteral("/store/1.0.0");

} // namespace

class MacRuntimeUpdaterTest : public ::testing::Test {
protected:
    MacRuntimeLaunchConfiguration resolve() {
        MacRuntimeLaunchConfiguration result;
        const auto task = store(updater.resolveLaunchConfiguration(), &result);
        world.queue.runUntilIdle();
        return result;
    }

    fakes::FakeWorld world;
    MacRuntimeUpdater updater{world.locations.resourceRoot(), world.stateRoot(), world.platform};

private:
    static Task<> store(Task<MacRuntimeLaunchConfiguration> task,
                        MacRuntimeLaunchConfiguration* result) {
        *result = co_await std::move(task);
    }
};

TEST_F(MacRuntimeUpdaterTest, ANewUpdaterKnowsItsRootsAndTouchesNoFile) {
    EXPECT_EQ(updater.resourceRoot(), QStringLiteral("/app/resources"));
    EXPECT_EQ(updater.stateRoot(), QStringLiteral("/home/user/share/Orvanta"));
    EXPECT_EQ(updater.lastStatus(), std::nullopt);
    EXPECT_EQ(updater.availableVersion(), std::nullopt);
    EXPECT_TRUE(world.files.questions.empty());
}

TEST_F(MacRuntimeUpdaterTest, ACompleteRuntimeIsValid) {
    world.files.addRuntime(kRoot);
    EXPECT_TRUE(updater.isValidRuntimeRoot(kRoot));
}

class MissingFile : public MacRuntimeUpdaterTest,
                    public ::testing::WithParamInterface<const char*> {};

TEST_P(MissingFile, MakesTheLocalServerIncomplete) {
    world.files.addRuntime(kRoot);
    world.files.remove(kRoot + QStringLiteral("/local-server/") + QLatin1String(GetParam()));
    EXPECT_FALSE(updater.hasRequiredLocalServerFiles(kRoot + QStringLiteral("/local-server")));
    EXPECT_FALSE(updater.isValidRuntimeRoot(kRoot));
}

INSTANTIATE_TEST_SUITE_P(Files, MissingFile,
                         ::testing::Values("server.js", "config.installer.json", "cloudflared",
                                           "views/project-list.html", "public/index3.html"));

TEST_F(MacRuntimeUpdaterTest, TheFilesAreTestedInOrderAndTheNodeLast) {
    world.files.addRuntime(kRoot);
    EXPECT_TRUE(updater.isValidRuntimeRoot(kRoot));
    const QString server = kRoot + QStringLiteral("/local-server");
    EXPECT_EQ(world.files.questions,
              (std::vector{server + QStringLiteral("/server.js"),
                           server + QStringLiteral("/config.installer.json"),
                           server + QStringLiteral("/cloudflared"),
                           server + QStringLiteral("/views/project-list.html"),
                           server + QStringLiteral("/public/index3.html"),
                           kRoot + QStringLiteral("/node-runtime/node")}));
}

TEST_F(MacRuntimeUpdaterTest, TheFirstMissingFileEndsTheTest) {
    EXPECT_FALSE(updater.isValidRuntimeRoot(kRoot));
    EXPECT_EQ(world.files.questions,
              std::vector{kRoot + QStringLiteral("/local-server/server.js")});
}

TEST_F(MacRuntimeUpdaterTest, ANodeMustBeExecutableACloudflaredNeedNot) {
    world.files.addRuntime(kRoot);
    EXPECT_FALSE(
        world.files.items.at(kRoot + QStringLiteral("/local-server/cloudflared")).isExecutable);
    EXPECT_TRUE(updater.isValidRuntimeRoot(kRoot));
    world.files.addFile(kRoot + QStringLiteral("/node-runtime/node"), "node", false);
    EXPECT_FALSE(updater.isValidRuntimeRoot(kRoot));
}

TEST_F(MacRuntimeUpdaterTest, AServerThatIsADirectoryCountsAsPresent) {
    world.files.addRuntime(kRoot);
    world.files.addDirectory(kRoot + QStringLiteral("/local-server/server.js"));
    EXPECT_TRUE(updater.isValidRuntimeRoot(kRoot));
}

TEST_F(MacRuntimeUpdaterTest, TheShippedRuntimeIsOfferedWithoutALookAtItsFiles) {
    world.environment.values.set("ORVANTA_RUNTIME_UPDATES_ENABLED", "0");
    world.files.items.clear();
    EXPECT_EQ(resolve(), (MacRuntimeLaunchConfiguration{
                             .localServerRoot = QStringLiteral("/app/resources/local-server"),
                             .nodeBinaryURL = QStringLiteral("/app/resources/node-runtime/node"),
                             .version = std::nullopt,
                             .isLegacy = true}));
    EXPECT_TRUE(world.files.questions.empty());
}

TEST_F(MacRuntimeUpdaterTest, SettingsComeFromTheFileAndAreReadAfresh) {
    EXPECT_EQ(updater.loadSettings(), MacRuntimeUpdateSettings{});
    world.files.addFile(world.configPath(), R"({"runtimeUpdates":{"channel":"stable"}})");
    EXPECT_EQ(updater.loadSettings().channel, QStringLiteral("stable"));
    world.files.addFile(world.configPath(), R"({"runtimeUpdates":{"channel":5}})");
    EXPECT_EQ(updater.loadSettings(), MacRuntimeUpdateSettings{});
    EXPECT_EQ(updater.lastStatus(), std::nullopt);
}

TEST_F(MacRuntimeUpdaterTest, TheEnvironmentCanSwitchTheStoreOff) {
    world.environment.values.set("ORVANTA_RUNTIME_UPDATES_ENABLED", "FALSE");
    EXPECT_FALSE(updater.loadSettings().enabled);
    world.environment.values.set("ORVANTA_RUNTIME_UPDATES_ENABLED", "no");
    EXPECT_TRUE(updater.loadSettings().enabled);
}

TEST_F(MacRuntimeUpdaterTest, TheStateRecordIsReadWhereTheStoreKeepsIt) {
    EXPECT_EQ(updater.currentState(), std::nullopt);
    world.files.addFile(world.stateRoot() + QStringLiteral("/runtime/current.json"),
                        R"({"currentVersion":"1.0.0","channel":"beta"})");
    ASSERT_TRUE(updater.currentState());
    EXPECT_EQ(updater.currentState()->currentVersion, QStringLiteral("1.0.0"));
    world.files.addFile(world.stateRoot() + QStringLiteral("/runtime/current.json"), "{}");
    EXPECT_EQ(updater.currentState(), std::nullopt);
}

} // namespace orvanta
