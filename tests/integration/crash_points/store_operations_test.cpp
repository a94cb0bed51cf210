// SPDX-License-Identifier: MIT
#include "integration/crash_points/crash_points_test.h"

namespace orvanta {
namespace {

const QString kNow = QStringLiteral("2026-11-15T21:37:51Z");

MacRuntimeCurrentState switched(MacRuntimeCurrentState state, bool isPending) {
    state.updatedAt = kNow;
    state.pendingHealthCheck = isPending;
    return state;
}

MacRuntimeCurrentState healthy(MacRuntimeCurrentState state) {
    state.lastHealthyVersion = state.currentVersion;
    state.lastHealthyAt = kNow;
    state.pendingHealthCheck = false;
    return state;
}

Report resolve(StoreProcess& process) {
    return process.resolve();
}

TEST_F(CrashPointsTest, Seeding) {
    ship("1.0.0");
    tryEveryPoint({.name = "seed",
                   .run = resolve,
                   .before = std::nullopt,
                   .after = switched(stateOf("1.0.0"), false),
                   .versionsAfter = {"1.0.0"},
                   .replaced = std::nullopt,
                   .fewestCalls = 40});
}

TEST_F(CrashPointsTest, Promotion) {
    ship("2.0.0");
    store("1.0.0");
    tryEveryPoint({.name = "promote",
                   .run = resolve,
                   .before = stateOf("1.0.0"),
                   .after = switched(stateOf("2.0.0", "1.0.0"), false),
                   .versionsAfter = {"1.0.0", "2.0.0"},
                   .replaced = std::nullopt,
                   .fewestCalls = 40});
}

class InstallationCrashPointsTest : public CrashPointsTest {
protected:
    void install(const char* name, bool inFolder) {
        ship("1.0.0");
        store("1.0.0");
        offer("2.0.0", inFolder);
        tryEveryPoint({.name = name,
                       .run = [](StoreProcess& process) { return process.update(); },
                       .before = stateOf("1.0.0"),
                       .after = switched(stateOf("2.0.0", "1.0.0"), true),
                       .versionsAfter = {"1.0.0", "2.0.0"},
                       .replaced = std::nullopt,
                       .fewestCalls = 40});
    }
};

TEST_F(InstallationCrashPointsTest, OfARuntimeInAFolder) {
    install("install, moved", true);
}

TEST_F(InstallationCrashPointsTest, OfARuntimeAtTheTop) {
    install("install, copied", false);
}

TEST_F(InstallationCrashPointsTest, OverThePreviousVersion) {
    ship("1.0.0");
    store("1.0.0");
    store("2.0.0");
    offer("2.0.0", true);
    tryEveryPoint({.name = "install over the previous version",
                   .run = [](StoreProcess& process) { return process.update(); },
                   .before = stateOf("1.0.0", "2.0.0"),
                   .after = switched(stateOf("2.0.0", "1.0.0"), true),
                   .versionsAfter = {"1.0.0", "2.0.0"},
                   .replaced = QStringLiteral("2.0.0"),
                   .fewestCalls = 50});
}

TEST_F(InstallationCrashPointsTest, OverTheCurrentVersion) {
    ship("1.0.0");
    store("1.0.0");
    store("2.0.0");
    offer("2.0.0", true);
    tryEveryPoint({.name = "install over the current version",
                   .run = [](StoreProcess& process) { return process.installAnyway(); },
                   .before = stateOf("2.0.0", "1.0.0"),
                   .after = switched(stateOf("2.0.0", "2.0.0"), true),
                   .versionsAfter = {"1.0.0", "2.0.0"},
                   .replaced = QStringLiteral("2.0.0"),
                   .fewestCalls = 50});
}

TEST_F(CrashPointsTest, Confirmation) {
    ship("1.0.0");
    store("1.0.0");
    store("2.0.0");
    const auto before = switched(stateOf("2.0.0", "1.0.0"), true);
    tryEveryPoint({.name = "mark healthy",
                   .run = [](StoreProcess& process) { return process.markHealthy(); },
                   .before = before,
                   .after = healthy(before),
                   .versionsAfter = {"1.0.0", "2.0.0"},
                   .replaced = std::nullopt,
                   .fewestCalls = 3});
}

TEST_F(CrashPointsTest, Pruning) {
    ship("1.0.0");
    for (const char* version : {"0.8.0", "0.9.0", "1.0.0", "2.0.0"}) {
        store(version);
    }
    write(inStateRoot("runtime/versions/notes.txt"), "stray");
    const auto before = healthy(stateOf("2.0.0", "1.0.0"));
    tryEveryPoint({.name = "prune",
                   .run = [](StoreProcess& process) { return process.markHealthy(); },
                   .before = before,
                   .after = before,
                   .versionsAfter = {"1.0.0", "2.0.0"},
                   .replaced = std::nullopt,
                   .fewestCalls = 20});
}

TEST_F(CrashPointsTest, Rollback) {
    ship("1.0.0");
    store("1.0.0");
    store("2.0.0");
    tryEveryPoint({.name = "roll back",
                   .run = [](StoreProcess& process) { return process.rollBack(); },
                   .before = switched(stateOf("2.0.0", "1.0.0"), true),
                   .after = switched(stateOf("1.0.0", "2.0.0"), false),
                   .versionsAfter = {"1.0.0", "2.0.0"},
                   .replaced = std::nullopt,
                   .fewestCalls = 3});
}

} // namespace
} // namespace orvanta
