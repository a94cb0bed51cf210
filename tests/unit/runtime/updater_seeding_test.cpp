// SPDX-License-Identifier: MIT
#include "unit/runtime/updater_fixture.h"

#include "orvanta_build_constants.h"

namespace orvanta {

class UpdaterSeeding : public UpdaterTest {
protected:
    MacRuntimeCurrentState seed(const char* channel = "beta") {
        return run(updater.seedBootstrapRuntime(QString::fromLatin1(channel)));
    }
    MacRuntimeCurrentState promote(const MacRuntimeCurrentState& state) {
        return run(updater.promoteBundledRuntimeIfNewer(state));
    }
    std::vector<std::string> copiesOf(const std::string& name) const {
        const std::string work = "staging/" + name + "-00000000-0000-4000-8000-000000000001";
        return {"* create " + work,
                "* copy /app/resources/local-server " + work + "/local-server",
                "* copy /app/resources/node-runtime " + work + "/node-runtime",
                "* remove " + work + "/local-server/runtime.json",
                "* create " + work + "/local-server",
                "* write " + work + "/local-server/runtime.json",
                "* create versions",
                "* move " + work + " versions/" + name};
    }
};

TEST_F(UpdaterSeeding, TheShippedRuntimeBecomesTheStore) {
    ship("1.4.0");
    const auto state = seed("stable");
    EXPECT_EQ(state, recorded());
    EXPECT_EQ(world.files.bytesOf(currentJson()), "{\n"
                                                  "  \"channel\" : \"stable\",\n"
                                                  "  \"currentVersion\" : \"1.4.0\",\n"
                                                  "  \"pendingHealthCheck\" : false,\n"
                                                  "  \"updatedAt\" : \"2026-11-15T21:37:51Z\"\n"
                                                  "}");
    EXPECT_EQ(status(), "Seeded 1.4.0");
    auto expected = copiesOf("1.4.0");
    expected.insert(expected.end(), {"create " + inStore(QString()).chopped(1).toStdString(),
                                     "write current.json"});
    EXPECT_EQ(changes(), expected);
}

TEST_F(UpdaterSeeding, TheShippedRecordIsWrittenAnewInsideTheLocalServer) {
    ship("1.4.0");
    seed();
    const QString root = versionDirectory(QStringLiteral("1.4.0"));
    EXPECT_EQ(world.files.bytesOf(root + QStringLiteral("/local-server/runtime.json")),
              "{\n"
              "  \"arch\" : \"any\",\n"
              "  \"builtAt\" : \"then\",\n"
              "  \"nodeVersion\" : \"v20\",\n"
              "  \"platform\" : \"any\",\n"
              "  \"version\" : \"1.4.0\"\n"
              "}");
    EXPECT_FALSE(world.files.itemExists(root + QStringLiteral("/runtime.json")));
}

TEST_F(UpdaterSeeding, AShippedRuntimeWithoutAUsableRecordIsCalledBootstrap) {
    for (const char* record : {"", R"({"version":"1.4.0"})"}) {
        if (*record != '\0') {
            world.files.addFile(shippedRecord(), record);
        }
        world.files.items.erase(currentJson());
        EXPECT_EQ(seed().currentVersion.toStdString(), "bootstrap");
        EXPECT_EQ(status(), "Seeded bootstrap");
    }
    const auto metadata = MacRuntimeMetadata::decode(world.files.bytesOf(
        versionDirectory(QStringLiteral("bootstrap/local-server/runtime.json"))));
    EXPECT_EQ(metadata, (MacRuntimeMetadata{.version = QStringLiteral("bootstrap"),
                                            .platform = QString::fromLatin1(build::kPlatform),
                                            .arch = QString::fromLatin1(build::kArch),
                                            .builtAt = QString::fromLatin1(kNow),
                                            .nodeVersion = std::nullopt,
                                            .cloudflaredVersion = std::nullopt}));
}

TEST_F(UpdaterSeeding, AnIncompleteShippedRuntimeCannotSeed) {
    for (const char* file : {"/local-server/public/index3.html", "/node-runtime/node"}) {
        world.files.addRuntime(world.locations.resourceRoot());
        world.files.remove(world.locations.resourceRoot() + QString::fromLatin1(file));
        EXPECT_EQ(errorOf(updater.seedBootstrapRuntime(QStringLiteral("beta"))),
                  "OrvantaMacRuntimeUpdater 2: Bundled runtime is incomplete.");
    }
    EXPECT_TRUE(changes().empty());
    EXPECT_EQ(status(), "(none)");
}

TEST_F(UpdaterSeeding, ACompleteVersionDirectoryIsNotCopiedAgain) {
    ship("1.4.0");
    world.files.addRuntime(versionDirectory(QStringLiteral("1.4.0")));
    seed();
    EXPECT_EQ(changes().back(), "write current.json");
    EXPECT_EQ(changes().size(), 2U);
    EXPECT_EQ(world.background.jobCount, 0);
    EXPECT_EQ(world.identifiers.given, 0);
}

TEST_F(UpdaterSeeding, AnIncompleteVersionDirectoryIsReplaced) {
    ship("1.4.0");
    const QString root = versionDirectory(QStringLiteral("1.4.0"));
    world.files.addRuntime(root);
    world.files.addFile(root + QStringLiteral("/stray"));
    world.files.remove(root + QStringLiteral("/local-server/server.js"));
    seed();
    EXPECT_TRUE(updater.isValidRuntimeRoot(root));
    EXPECT_FALSE(world.files.itemExists(root + QStringLiteral("/stray")));
}

TEST_F(UpdaterSeeding, ACompleteVersionDirectoryBehindARecordIsRecordedAnew) {
    ship("1.4.0");
    makeStore("1.4.0");
    auto expected = stateOf("1.4.0");
    expected.updatedAt = QString::fromLatin1(kNow);
    expected.pendingHealthCheck = false;
    EXPECT_EQ(seed(), expected);
    EXPECT_EQ(recorded(), expected);
}

TEST_F(UpdaterSeeding, AShippedVersionThatCannotNameADirectoryNeverReachesTheFiles) {
    makeStore("1.2.0");
    world.files.items.erase(currentJson());
    for (const char* version : {"", ".", ".."}) {
        ship(version);
        EXPECT_EQ(errorOf(updater.seedBootstrapRuntime(QStringLiteral("beta"))),
                  std::string("OrvantaMacRuntimeUpdater 3: The version \"") + version +
                      "\" cannot name a directory.");
    }
    ship("9.\\u0000");
    EXPECT_THAT(errorOf(updater.promoteBundledRuntimeIfNewer(stateOf("1.2.0"))),
                ::testing::StartsWith("OrvantaMacRuntimeUpdater 3: "));
    EXPECT_TRUE(changes().empty());
    EXPECT_EQ(world.background.jobCount, 0);
}

TEST_F(UpdaterSeeding, ACopyThatFailsIsThrownAndLeavesTheScratchDirectory) {
    ship("1.4.0");
    world.files.failures["moveItem"] = QStringLiteral("Disk full.");
    EXPECT_EQ(errorOf(updater.seedBootstrapRuntime(QStringLiteral("beta"))), "fake 1: Disk full.");
    EXPECT_EQ(world.files.namesIn(inStore(QStringLiteral("staging"))).size(), 1);
    EXPECT_FALSE(world.files.itemExists(currentJson()));
    EXPECT_EQ(status(), "(none)");
}

TEST_F(UpdaterSeeding, ARecordThatCannotBeWrittenIsNoFailure) {
    ship("1.4.0");
    for (const std::string& operation :
         {"writeFile " + currentJson().toStdString(),
          "createDirectory " + inStore(QString()).chopped(1).toStdString()}) {
        world.files.failures = {{operation, QStringLiteral("Disk full.")}};
        EXPECT_EQ(seed().currentVersion.toStdString(), "1.4.0");
        EXPECT_EQ(status(), "Seeded 1.4.0");
        EXPECT_FALSE(world.files.itemExists(currentJson()));
    }
}

TEST_F(UpdaterSeeding, ANewerShippedRuntimeIsPromoted) {
    ship("1.4.0");
    MacRuntimeCurrentState old = stateOf("1.3.0");
    old.previousVersion = QStringLiteral("1.2.0");
    old.lastHealthyVersion = QStringLiteral("1.3.0");
    old.channel = QStringLiteral("stable");
    old.lastCheckedAt = QStringLiteral("checked");
    old.lastHealthyAt = QStringLiteral("healthy");
    old.availableVersion = QStringLiteral("1.3.5");
    old.pendingHealthCheck = true;
    old.updatedAt = QStringLiteral("before");
    writeState(old);

    MacRuntimeCurrentState expected = old;
    expected.currentVersion = QStringLiteral("1.4.0");
    expected.previousVersion = QStringLiteral("1.3.0");
    expected.availableVersion = std::nullopt;
    expected.pendingHealthCheck = false;
    expected.updatedAt = QString::fromLatin1(kNow);
    EXPECT_EQ(promote(old), expected);
    EXPECT_EQ(recorded(), expected);
    EXPECT_EQ(status(), "Promoted bundled runtime 1.4.0");
    auto steps = copiesOf("1.4.0");
    steps.insert(steps.end(),
                 {"create " + inStore(QString()).chopped(1).toStdString(), "write current.json"});
    EXPECT_EQ(changes(), steps);
}

TEST_F(UpdaterSeeding, PromotionForgetsTheVersionOffered) {
    makeStore("1.3.0");
    serve("1.3.5");
    check();
    ASSERT_EQ(available(), "1.3.5");
    ship("1.4.0");
    promote(recorded());
    EXPECT_EQ(available(), "(none)");
}

TEST_F(UpdaterSeeding, PromotionOfACompleteVersionCopiesNothing) {
    makeStore("1.3.0");
    ship("1.4.0");
    world.files.addRuntime(versionDirectory(QStringLiteral("1.4.0")));
    EXPECT_EQ(promote(recorded()).currentVersion.toStdString(), "1.4.0");
    EXPECT_EQ(world.background.jobCount, 0);
}

TEST_F(UpdaterSeeding, AnOlderOrEqualShippedRuntimeIsNotPromoted) {
    makeStore("1.2.0");
    for (const char* version : {"1.2.0", "v1.2.0", "1.2", "1.1.9", "1.2.0-rc.1"}) {
        ship(version);
        EXPECT_EQ(promote(recorded()), stateOf("1.2.0")) << version;
    }
    EXPECT_TRUE(changes().empty());
    EXPECT_EQ(status(), "(none)");
}

TEST_F(UpdaterSeeding, AShippedRuntimeWithoutARecordIsNeverPromoted) {
    makeStore("0.0.1");
    EXPECT_EQ(promote(recorded()), stateOf("0.0.1"));
    world.files.addFile(shippedRecord(), "{");
    EXPECT_EQ(promote(recorded()), stateOf("0.0.1"));
    EXPECT_TRUE(changes().empty());
}

TEST_F(UpdaterSeeding, AnIncompleteShippedRuntimeIsSilentlyNotPromoted) {
    makeStore("1.2.0");
    ship("1.4.0");
    world.files.remove(QStringLiteral("/app/resources/node-runtime/node"));
    EXPECT_EQ(promote(recorded()), stateOf("1.2.0"));
    EXPECT_TRUE(changes().empty());
}

TEST_F(UpdaterSeeding, APromotionThatFailsIsThrownAndChangesNothing) {
    makeStore("1.2.0");
    ship("1.4.0");
    world.files.failures["copyItem"] = QStringLiteral("Disk full.");
    EXPECT_EQ(errorOf(updater.promoteBundledRuntimeIfNewer(recorded())), "fake 1: Disk full.");
    EXPECT_EQ(recorded(), stateOf("1.2.0"));
    EXPECT_EQ(status(), "(none)");
}

TEST_F(UpdaterSeeding, APromotionThatCannotBeRecordedHoldsInMemory) {
    makeStore("1.2.0");
    ship("1.4.0");
    world.files.failures["writeFile " + currentJson().toStdString()] = QStringLiteral("Full.");
    EXPECT_EQ(promote(recorded()).currentVersion.toStdString(), "1.4.0");
    EXPECT_EQ(recorded(), stateOf("1.2.0"));
    EXPECT_EQ(status(), "Promoted bundled runtime 1.4.0");
}

} // namespace orvanta
