// SPDX-License-Identifier: MIT
#include "unit/runtime/updater_fixture.h"

#include "orvanta_build_constants.h"

namespace orvanta {

class UpdaterManifest : public UpdaterTest {
protected:
    void SetUp() override { makeStore("1.3.2"); }

    fakes::FakeChannel channel{QStringLiteral("1.4.0")};
};

TEST_F(UpdaterManifest, ANewerVersionIsOfferedAndRecorded) {
    auto before = stateOf("1.3.2");
    before.previousVersion = QStringLiteral("1.3.1");
    before.lastHealthyVersion = QStringLiteral("1.3.2");
    before.lastHealthyAt = QStringLiteral("healthy");
    before.updatedAt = QStringLiteral("updated");
    before.pendingHealthCheck = true;
    writeState(before);
    serve(channel);
    EXPECT_EQ(check(), "ok: Update available: 1.4.0");
    EXPECT_EQ(available(), "1.4.0");
    auto expected = before;
    expected.lastCheckedAt = QString::fromLatin1(kNow);
    expected.availableVersion = QStringLiteral("1.4.0");
    EXPECT_EQ(recorded(), expected);
    EXPECT_EQ(changes(),
              (std::vector<std::string>{"create " + inStore(QString()).chopped(1).toStdString(),
                                        "write current.json"}));
    EXPECT_EQ(world.background.jobCount, 0);
}

TEST_F(UpdaterManifest, TheManifestIsAskedForOnceThroughTheSharedSession) {
    configure(R"({"manifestBaseUrl":"https://h.example/r///","channel":"stable"})");
    serve(channel);
    check();
    ASSERT_EQ(world.http.requests.size(), 1U);
    const auto& request = world.http.requests.front();
    EXPECT_EQ(request.url.toStdString(), std::string("https://h.example/r/stable/") +
                                             build::kPlatform + "/" + build::kArch +
                                             "/manifest.json");
    EXPECT_EQ(request.method, "GET");
    EXPECT_TRUE(request.isShared);
}

TEST_F(UpdaterManifest, AManifestOfMoreThanOneMebibyteIsNotTaken) {
    const QByteArray document = channel.manifest();
    channel.otherDocument = document.leftJustified(1024 * 1024, ' ');
    serve(channel);
    EXPECT_EQ(check(), "ok: Update available: 1.4.0");
    channel.otherDocument = document.leftJustified(1024 * 1024 + 1, ' ');
    serve(channel);
    EXPECT_THAT(check(),
                ::testing::StartsWith("failed: Runtime manifest check failed: The reply of "));
    EXPECT_THAT(status(), ::testing::EndsWith("has more than 1048576 bytes."));
}

class NotNewer : public UpdaterManifest, public ::testing::WithParamInterface<const char*> {};

TEST_P(NotNewer, VersionsAreNotOfferedButTheCheckIsStamped) {
    auto state = stateOf("1.3.2");
    state.availableVersion = QStringLiteral("1.3.9");
    writeState(state);
    serve("1.9.0");
    check();
    serve(GetParam());
    EXPECT_EQ(check(), "ok: Current (1.3.2)");
    EXPECT_EQ(available(), "(none)");
    EXPECT_EQ(recorded().availableVersion, std::nullopt);
    EXPECT_EQ(recorded().lastCheckedAt.value().toStdString(), kNow);
    EXPECT_EQ(recorded().currentVersion.toStdString(), "1.3.2");
}

INSTANTIATE_TEST_SUITE_P(Versions, NotNewer,
                         ::testing::Values("1.3.2", "v1.3.2", "1.3.2.0", "1.3.1", "1.3.2-rc"));

TEST_F(UpdaterManifest, ACheckThatCannotBeRecordedSucceeds) {
    serve(channel);
    for (const char* operation : {"writeFile", "createDirectory"}) {
        world.files.failures = {{operation, QStringLiteral("Disk full.")}};
        EXPECT_EQ(check(), "ok: Update available: 1.4.0");
        EXPECT_EQ(available(), "1.4.0");
        EXPECT_EQ(recorded(), stateOf("1.3.2"));
    }
}

TEST_F(UpdaterManifest, AMissingOrBrokenRecordIsSeededBeforeTheFetch) {
    ship("1.2.0");
    for (const bool exists : {false, true}) {
        world.files.items.erase(currentJson());
        if (exists) {
            world.files.addFile(currentJson(), R"({"currentVersion":"9"})");
        }
        serve(channel);
        EXPECT_EQ(check(), "ok: Update available: 1.4.0");
        EXPECT_EQ(recorded().currentVersion.toStdString(), "1.2.0");
        EXPECT_EQ(recorded().updatedAt.value().toStdString(), kNow);
    }
}

TEST_F(UpdaterManifest, PlatformAndProcessorMatchWithoutRegardToCase) {
    channel.platform = channel.platform.toUpper();
    channel.arch = channel.arch.toUpper();
    channel.channel = QStringLiteral("another");
    channel.sha256 = QString();
    serve(channel);
    EXPECT_EQ(check(), "ok: Update available: 1.4.0");
}

/// What can go wrong with a check, and what is said then.
struct BadChannel {
    const char* name;
    std::function<void(fakes::FakeChannel&)> spoil;
    const char* message;
};

void PrintTo(const BadChannel& bad, std::ostream* stream) {
    *stream << bad.name;
}

class FailedCheck : public UpdaterManifest, public ::testing::WithParamInterface<BadChannel> {};

TEST_P(FailedCheck, IsReportedAndLeavesEverythingAsItWas) {
    serve("1.3.9");
    check();
    const auto before = recorded();
    world.wallClock.time = world.wallClock.time.addSecs(60);
    world.files.changes.clear();
    GetParam().spoil(channel);
    serve(channel);
    const std::string expected = std::string("failed: ") + GetParam().message;
    EXPECT_THAT(check(), ::testing::StartsWith(expected));
    EXPECT_EQ(recorded(), before);
    EXPECT_EQ(available(), "1.3.9");
    EXPECT_TRUE(changes().empty());

    EXPECT_THAT(update(), ::testing::StartsWith(expected));
    EXPECT_EQ(recorded(), before);
    EXPECT_EQ(available(), "1.3.9");
    EXPECT_TRUE(changes().empty());
}

INSTANTIATE_TEST_SUITE_P(
    Reasons, FailedCheck,
    ::testing::Values(
        BadChannel{"NotFound", [](auto& c) { c.manifestStatus = 404; },
                   "Runtime manifest was not available."},
        BadChannel{"NotModified", [](auto& c) { c.manifestStatus = 304; },
                   "Runtime manifest was not available."},
        BadChannel{"NoContent", [](auto& c) { c.manifestStatus = 204; },
                   "Runtime manifest was not available."},
        BadChannel{"Created", [](auto& c) { c.manifestStatus = 201; },
                   "Runtime manifest was not available."},
        BadChannel{"Unreachable", [](auto& c) { c.manifestStatus = 0; },
                   "Runtime manifest check failed: http"},
        BadChannel{"NotJson", [](auto& c) { c.otherDocument = "<html>"; },
                   "Runtime manifest check failed: "},
        BadChannel{"Empty", [](auto& c) { c.otherDocument = ""; },
                   "Runtime manifest check failed: "},
        BadChannel{"WithoutDigest",
                   [](auto& c) { c.otherDocument = c.manifest().replace("sha256", "sha"); },
                   "Runtime manifest check failed: "},
        BadChannel{"OtherProcessor", [](auto& c) { c.arch = QStringLiteral("mips"); },
                   "Runtime manifest does not match this app."},
        BadChannel{"OtherPlatform", [](auto& c) { c.platform = QStringLiteral("beos"); },
                   "Runtime manifest does not match this app."},
        BadChannel{"NoVersion", [](auto& c) { c.version = QString(); },
                   "Runtime manifest does not match this app."},
        BadChannel{"NoAddress", [](auto& c) { c.archiveUrl = QString(); },
                   "Runtime manifest does not match this app."}),
    [](const auto& test) { return test.param.name; });

TEST_F(UpdaterManifest, AFailedCheckNamesTheReason) {
    check();
    EXPECT_THAT(status(), ::testing::EndsWith("could not be reached."));
    channel.otherDocument = "{}";
    serve(channel);
    check();
    EXPECT_GT(status().size(), std::string("Runtime manifest check failed: ").size() + 5);
}

TEST_F(UpdaterManifest, AnAddressThatDoesNotParseIsNotAskedFor) {
    for (const char* settings : {R"({"manifestBaseUrl":"not a url"})", R"({"channel":"a b"})",
                                 R"({"manifestBaseUrl":"//"})"}) {
        configure(settings);
        EXPECT_EQ(check(), "failed: Runtime manifest URL is invalid.");
        EXPECT_EQ(update(), "failed: Runtime manifest URL is invalid.");
    }
    EXPECT_TRUE(requests().empty());
}

TEST_F(UpdaterManifest, AnAddressThatIsNotHttpOffersNothing) {
    for (const char* base : {"file:///srv/runtime", "FILE:///srv", "ftp://h.example/runtime"}) {
        configure(QByteArray("{\"manifestBaseUrl\":\"") + base + "\"}");
        EXPECT_EQ(check(), "failed: Runtime manifest was not available.");
        EXPECT_EQ(update(), "failed: Runtime manifest was not available.");
    }
    EXPECT_TRUE(requests().empty());
    configure(R"({"manifestBaseUrl":"HTTP://h.example"})");
    serve(channel);
    EXPECT_EQ(check(), "ok: Update available: 1.4.0");
}

TEST_F(UpdaterManifest, SwitchedOffNothingIsReadOrWritten) {
    configure(R"({"enabled":false})");
    EXPECT_EQ(check(), "failed: Runtime updater disabled in config.json.");
    EXPECT_EQ(update(), "failed: Runtime updater disabled in config.json.");
    EXPECT_TRUE(requests().empty());
    EXPECT_TRUE(changes().empty());
    EXPECT_FALSE(world.files.reads.contains(currentJson()));
}

TEST_F(UpdaterManifest, AStoreThatCannotBeSeededEndsTheOperation) {
    world.files.items.erase(currentJson());
    world.files.remove(QStringLiteral("/app/resources/node-runtime/node"));
    EXPECT_EQ(check(), "failed: Could not seed the runtime store: Bundled runtime is incomplete.");
    EXPECT_EQ(update(), "failed: Could not seed the runtime store: Bundled runtime is incomplete.");
    EXPECT_TRUE(requests().empty());
    EXPECT_TRUE(changes().empty());
}

TEST_F(UpdaterManifest, AFetchThatSucceedsLeavesTheStatusAlone) {
    serve(channel);
    const auto manifest = run(updater.fetchManifest(updater.loadSettings()));
    ASSERT_TRUE(manifest);
    EXPECT_EQ(manifest->version.toStdString(), "1.4.0");
    EXPECT_EQ(status(), "(none)");
}

} // namespace orvanta
