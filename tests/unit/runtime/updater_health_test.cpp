// SPDX-License-Identifier: MIT
#include "unit/runtime/updater_fixture.h"

namespace orvanta {

class UpdaterHealth : public UpdaterTest {
protected:
    void SetUp() override {
        for (const char* version : {"1.7.0", "1.8.0", "1.9.0", "2.0.0"}) {
            world.files.addRuntime(versionDirectory(QString::fromLatin1(version)));
        }
        world.files.addFile(versionDirectory(QStringLiteral("notes.txt")));
        writeState(before());
    }
    MacRuntimeCurrentState before() const {
        MacRuntimeCurrentState state = stateOf("2.0.0");
        state.previousVersion = QStringLiteral("1.9.0");
        state.lastHealthyVersion = QStringLiteral("1.8.0");
        state.lastCheckedAt = QStringLiteral("checked");
        state.availableVersion = QStringLiteral("2.1.0");
        state.updatedAt = QStringLiteral("updated");
        state.lastHealthyAt = QStringLiteral("healthy");
        state.pendingHealthCheck = true;
        return state;
    }
    static MacRuntimeLaunchConfiguration launched(const std::optional<QString>& version) {
        return {.localServerRoot = QStringLiteral("/s"),
                .nodeBinaryURL = QStringLiteral("/n"),
                .version = version,
                .isLegacy = false};
    }
    std::vector<std::string> versions() const {
        std::vector<std::string> names;
        for (const QString& name : world.files.namesIn(inStore(QStringLiteral("versions")))) {
            names.push_back(name.toStdString());
        }
        return names;
    }
    /// Where the entry of the versions directory is that was retired as number `index`.
    static std::string retired(const char* name, int index) {
        return std::string("staging/") + name + "-" +
               fakes::FakeIdentifiers::number(index).toStdString();
    }
    using Names = std::vector<std::string>;
};

TEST_F(UpdaterHealth, TheCurrentVersionIsConfirmedAndTheStorePruned) {
    updater.markRuntimeHealthy(launched(QStringLiteral("2.0.0")));
    auto expected = before();
    expected.lastHealthyVersion = QStringLiteral("2.0.0");
    expected.lastHealthyAt = QString::fromLatin1(kNow);
    expected.pendingHealthCheck = false;
    EXPECT_EQ(recorded(), expected);
    EXPECT_EQ(versions(), (Names{"1.9.0", "2.0.0"}));
    EXPECT_EQ(status(), "(none)");
}

TEST_F(UpdaterHealth, VersionsArePrunedAtOnceAndRemovedByTheWorker) {
    updater.markRuntimeHealthy(std::nullopt);
    EXPECT_EQ(versions(), (Names{"1.9.0", "2.0.0"}));
    EXPECT_EQ(changes(),
              (Names{"create " + inStore(QString()).chopped(1).toStdString(), "write current.json",
                     "create staging", "move versions/1.7.0 " + retired("1.7.0", 1),
                     "create staging", "move versions/1.8.0 " + retired("1.8.0", 2),
                     "create staging", "move versions/notes.txt " + retired("notes.txt", 3)}));
    EXPECT_EQ(world.background.jobCount, 0);
    world.files.changes.clear();
    world.queue.runUntilIdle();
    EXPECT_EQ(changes(),
              (Names{"* remove " + retired("1.7.0", 1), "* remove " + retired("1.8.0", 2),
                     "* remove " + retired("notes.txt", 3), "* remove staging"}));
    EXPECT_FALSE(world.files.itemExists(inStore(QStringLiteral("staging"))));
}

TEST_F(UpdaterHealth, WithNothingToPruneTheWorkerIsLeftAlone) {
    updater.markRuntimeHealthy(std::nullopt);
    world.queue.runUntilIdle();
    world.files.changes.clear();
    updater.markRuntimeHealthy(std::nullopt);
    world.queue.runUntilIdle();
    EXPECT_EQ(world.background.jobCount, 1);
    EXPECT_EQ(changes().size(), 2U);
}

TEST_F(UpdaterHealth, WhatAFailedInstallationLeftInStagingIsNotPrunedWithTheVersions) {
    world.files.addFile(inStore(QStringLiteral("staging/left/over")));
    updater.markRuntimeHealthy(std::nullopt);
    world.queue.runUntilIdle();
    EXPECT_EQ(world.files.namesIn(inStore(QStringLiteral("staging"))),
              QStringList{QStringLiteral("left")});
}

TEST_F(UpdaterHealth, AVersionThatCannotBeMovedIsRemovedAtOnce) {
    for (const char* operation : {"moveItem", "createDirectory"}) {
        SCOPED_TRACE(operation);
        world.files.addRuntime(versionDirectory(QStringLiteral("1.7.0")));
        world.files.failures = {{operation, QStringLiteral("No.")}};
        updater.markRuntimeHealthy(std::nullopt);
        EXPECT_EQ(versions(), (Names{"1.9.0", "2.0.0"}));
        world.queue.runUntilIdle();
        EXPECT_EQ(world.background.jobCount, 0);
    }
}

TEST_F(UpdaterHealth, ARetiredVersionThatCannotBeRemovedDoesNotStopTheOthers) {
    world.files
        .failures["removeItem " + inStore(QStringLiteral("")).toStdString() + retired("1.7.0", 1)] =
        QStringLiteral("Busy.");
    updater.markRuntimeHealthy(std::nullopt);
    world.queue.runUntilIdle();
    EXPECT_EQ(world.files.namesIn(inStore(QStringLiteral("staging"))).size(), 1);
    EXPECT_EQ(versions(), (Names{"1.9.0", "2.0.0"}));
}

TEST_F(UpdaterHealth, TheShippedRuntimeAndNoRuntimeConfirmTheCurrentVersion) {
    for (const auto& runtime : {std::optional(updater.shippedLaunchConfiguration()),
                                std::optional<MacRuntimeLaunchConfiguration>()}) {
        writeState(before());
        updater.markRuntimeHealthy(runtime);
        EXPECT_EQ(recorded().lastHealthyVersion.value().toStdString(), "2.0.0");
        EXPECT_EQ(recorded().pendingHealthCheck, false);
    }
}

TEST_F(UpdaterHealth, AnotherVersionIsRecordedAndKeptButThePendingOneStaysPending) {
    updater.markRuntimeHealthy(launched(QStringLiteral("1.7.0")));
    auto expected = before();
    expected.lastHealthyVersion = QStringLiteral("1.7.0");
    expected.lastHealthyAt = QString::fromLatin1(kNow);
    EXPECT_EQ(recorded(), expected);
    EXPECT_EQ(versions(), (Names{"1.7.0", "1.9.0", "2.0.0"}));
}

TEST_F(UpdaterHealth, OnlyTheSameTextIsTheCurrentVersion) {
    updater.markRuntimeHealthy(launched(QStringLiteral("v2.0.0")));
    EXPECT_EQ(recorded().pendingHealthCheck, true);
    EXPECT_EQ(recorded().lastHealthyVersion.value().toStdString(), "v2.0.0");
}

TEST_F(UpdaterHealth, WithoutAVersionNothingHappens) {
    updater.markRuntimeHealthy(launched(std::nullopt));
    updater.markRuntimeHealthy(launched(QString()));
    auto nameless = before();
    nameless.currentVersion = QString();
    writeState(nameless);
    updater.markRuntimeHealthy(std::nullopt);
    EXPECT_TRUE(changes().empty());
}

TEST_F(UpdaterHealth, WithoutARecordNothingHappens) {
    world.files.addFile(currentJson(), "{");
    updater.markRuntimeHealthy(launched(QStringLiteral("2.0.0")));
    world.files.items.erase(currentJson());
    updater.markRuntimeHealthy(launched(QStringLiteral("2.0.0")));
    EXPECT_TRUE(changes().empty());
}

TEST_F(UpdaterHealth, ARecordThatCannotBeWrittenDoesNotStopThePruning) {
    world.files.failures["writeFile"] = QStringLiteral("Disk full.");
    updater.markRuntimeHealthy(launched(QStringLiteral("2.0.0")));
    EXPECT_EQ(recorded(), before());
    EXPECT_EQ(versions(), (Names{"1.9.0", "2.0.0"}));
}

TEST_F(UpdaterHealth, ARemovalThatFailsDoesNotStopTheOthers) {
    world.files.failures["moveItem"] = QStringLiteral("No.");
    world.files.failures["removeItem " + versionDirectory(QStringLiteral("1.7.0")).toStdString()] =
        QStringLiteral("Busy.");
    updater.markRuntimeHealthy(launched(QStringLiteral("2.0.0")));
    EXPECT_EQ(versions(), (Names{"1.7.0", "1.9.0", "2.0.0"}));
}

TEST_F(UpdaterHealth, AVersionIsKeptByItsDirectoryName) {
    world.files.addRuntime(versionDirectory(QStringLiteral("1.2.3_rc")));
    auto state = before();
    state.previousVersion = QStringLiteral("1.2.3:rc");
    writeState(state);
    updater.markRuntimeHealthy(launched(QStringLiteral("2.0.0")));
    EXPECT_EQ(versions(), (Names{"1.2.3_rc", "2.0.0"}));
}

TEST_F(UpdaterHealth, PruningKeepsExactlyTheNamesGiven) {
    auto state = stateOf("1.7.0");
    updater.cleanupOldVersions(state, std::nullopt);
    EXPECT_EQ(versions(), (Names{"1.7.0"}));
}

TEST_F(UpdaterHealth, PruningKeepsAllFourVersions) {
    world.files.addRuntime(versionDirectory(QStringLiteral("1.6.0")));
    updater.cleanupOldVersions(before(), QStringLiteral("1.7.0"));
    EXPECT_EQ(versions(), (Names{"1.7.0", "1.8.0", "1.9.0", "2.0.0"}));
}

TEST_F(UpdaterHealth, AVersionsDirectoryThatCannotBeListedIsLeftAlone) {
    world.files.failures["contentsOfDirectory"] = QStringLiteral("No.");
    updater.markRuntimeHealthy(launched(QStringLiteral("2.0.0")));
    EXPECT_EQ(versions().size(), 5U);
    EXPECT_EQ(recorded().lastHealthyVersion.value().toStdString(), "2.0.0");
}

TEST_F(UpdaterHealth, ARollbackSwapsTheTwoVersions) {
    serve("2.1.0");
    check();
    const auto checked = recorded();
    world.files.changes.clear();
    EXPECT_EQ(told(updater.rollback()), "ok: Rolled back to 1.9.0.");
    auto expected = checked;
    expected.currentVersion = QStringLiteral("1.9.0");
    expected.previousVersion = QStringLiteral("2.0.0");
    expected.availableVersion = std::nullopt;
    expected.updatedAt = QString::fromLatin1(kNow);
    expected.pendingHealthCheck = false;
    EXPECT_EQ(recorded(), expected);
    EXPECT_EQ(available(), "(none)");
    EXPECT_EQ(changes(), (Names{"create " + inStore(QString()).chopped(1).toStdString(),
                                "write current.json"}));
}

TEST_F(UpdaterHealth, ARollbackIsItsOwnInverse) {
    updater.rollback();
    EXPECT_EQ(told(updater.rollback()), "ok: Rolled back to 2.0.0.");
    EXPECT_EQ(recorded().currentVersion.toStdString(), "2.0.0");
    EXPECT_EQ(recorded().previousVersion.value().toStdString(), "1.9.0");
}

TEST_F(UpdaterHealth, ARollbackThatCannotBeRecordedSucceeds) {
    for (const char* operation : {"writeFile", "createDirectory"}) {
        world.files.failures = {{operation, QStringLiteral("Full.")}};
        EXPECT_EQ(told(updater.rollback()), "ok: Rolled back to 1.9.0.");
        EXPECT_EQ(recorded(), before());
    }
}

TEST_F(UpdaterHealth, WithoutAPreviousVersionThereIsNoRollback) {
    auto state = before();
    state.previousVersion = std::nullopt;
    for (const QByteArray& record : {QByteArray("{"), state.encode(), QByteArray()}) {
        world.files.addFile(currentJson(), record);
        EXPECT_EQ(told(updater.rollback()), "failed: No previous runtime is available.");
    }
    state.previousVersion = QString();
    writeState(state);
    EXPECT_EQ(told(updater.rollback()), "failed: No previous runtime is available.");
    world.files.items.erase(currentJson());
    EXPECT_EQ(told(updater.rollback()), "failed: No previous runtime is available.");
    EXPECT_TRUE(changes().empty());
}

TEST_F(UpdaterHealth, AnIncompletePreviousVersionIsNotRolledBackTo) {
    world.files.remove(versionDirectory(QStringLiteral("1.9.0/node-runtime/node")));
    EXPECT_EQ(told(updater.rollback()), "failed: Previous runtime is incomplete: 1.9.0.");
    EXPECT_EQ(recorded(), before());
    EXPECT_TRUE(changes().empty());
}

} // namespace orvanta
