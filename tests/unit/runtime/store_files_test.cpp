// SPDX-License-Identifier: MIT
#include "runtime/store_files.h"

#include "base/platform_error.h"
#include "fakes/fake_files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orvanta {

namespace {

std::string nameOf(const QString& version) {
    return directoryName(version).toStdString();
}

const QString kSource = QStringLiteral("/source");
const QString kTarget = QStringLiteral("/target");

} // namespace

TEST(DirectoryName, OnlySlashesAndColonsChange) {
    EXPECT_EQ(nameOf(QStringLiteral("1.2.3")), "1.2.3");
    EXPECT_EQ(nameOf(QStringLiteral("release/1.2:3")), "release_1.2_3");
    EXPECT_EQ(nameOf(QStringLiteral("v1.0")), "v1.0");
    EXPECT_EQ(nameOf(QStringLiteral("1.2.3/beta:1")), "1.2.3_beta_1");
    EXPECT_EQ(nameOf(QStringLiteral(" A\\b ")), " A\\b ");
    EXPECT_EQ(nameOf(QString()), "");
    EXPECT_EQ(nameOf(QString::fromUtf8("1.0-\xF0\x9F\x9A\x80/\xC3\xA9")),
              "1.0-\xF0\x9F\x9A\x80_\xC3\xA9");
}

TEST(DirectoryName, SomeNamesWouldLeaveTheirParent) {
    for (const char* name : {"1.0", "...", "..a", "v", "_"}) {
        EXPECT_TRUE(isSafeDirectoryName(QString::fromLatin1(name))) << name;
    }
    for (const char* name : {"", ".", ".."}) {
        EXPECT_FALSE(isSafeDirectoryName(QString::fromLatin1(name))) << name;
    }
    EXPECT_FALSE(isSafeDirectoryName(QStringLiteral("1.0") + QChar(QChar::Null)));
}

TEST(StorePaths, EverythingIsBelowTheRuntimeDirectory) {
    const StorePaths paths(QStringLiteral("/state"));
    EXPECT_EQ(paths.currentState().toStdString(), "/state/runtime/current.json");
    EXPECT_EQ(paths.versions().toStdString(), "/state/runtime/versions");
    EXPECT_EQ(paths.staging().toStdString(), "/state/runtime/staging");
    EXPECT_EQ(paths.version(QStringLiteral("1/2")).toStdString(), "/state/runtime/versions/1_2");
    EXPECT_EQ(paths.work(QStringLiteral("1/2"), QStringLiteral("ABC")).toStdString(),
              "/state/runtime/staging/1_2-ABC");
}

class StoreFiles : public ::testing::Test {
protected:
    fakes::FakeFiles files;
};

TEST_F(StoreFiles, RemovingAMissingItemIsNoError) {
    removeIfExists(files, kTarget);
    EXPECT_TRUE(files.changes.isEmpty());
}

TEST_F(StoreFiles, RemovingTakesWholeTreesAndPassesFailuresOn) {
    files.addFile(kTarget + QStringLiteral("/a/b"));
    files.failures["removeItem"] = QStringLiteral("Busy.");
    EXPECT_THROW(removeIfExists(files, kTarget), PlatformError);
    files.failures.clear();
    removeIfExists(files, kTarget);
    EXPECT_TRUE(files.items.empty());
}

TEST_F(StoreFiles, CopyingReplacesADirectoryEntirely) {
    files.addFile(kSource + QStringLiteral("/new"), "new", true);
    files.addFile(kTarget + QStringLiteral("/old"));
    copyReplacing(files, kSource, kTarget);
    EXPECT_EQ(files.namesIn(kTarget), QStringList{QStringLiteral("new")});
    EXPECT_TRUE(files.isExecutableFile(kTarget + QStringLiteral("/new")));
    EXPECT_TRUE(files.itemExists(kSource + QStringLiteral("/new")));
}

TEST_F(StoreFiles, AFailedCopyIsPassedOnAndTheOldIsGone) {
    files.addFile(kTarget);
    EXPECT_THROW(copyReplacing(files, kSource, kTarget), PlatformError);
    EXPECT_FALSE(files.itemExists(kTarget));
}

TEST_F(StoreFiles, ARecordGetsItsDirectoryFirst) {
    writeRecord(files, QStringLiteral("/a/b/current.json"), "{}");
    EXPECT_EQ(files.changes, (QStringList{QStringLiteral("create /a/b"),
                                          QStringLiteral("write /a/b/current.json")}));
    EXPECT_EQ(files.bytesOf(QStringLiteral("/a/b/current.json")), "{}");
}

TEST_F(StoreFiles, ARecordThatIsMissingUnreadableOrBrokenIsNone) {
    const QString path = QStringLiteral("/current.json");
    EXPECT_EQ(readCurrentState(files, path), std::nullopt);
    files.addFile(path, R"({"currentVersion":"1"})");
    EXPECT_EQ(readCurrentState(files, path), std::nullopt);
    files.addFile(path, R"({"currentVersion":"1","channel":"beta"})");
    EXPECT_TRUE(readCurrentState(files, path));
    files.failures["readFile"] = QStringLiteral("No.");
    EXPECT_EQ(readCurrentState(files, path), std::nullopt);
}

class Assembling : public StoreFiles {
protected:
    void SetUp() override {
        files.addRuntime(kSource);
        files.addFile(kSource + QStringLiteral("/other"));
        files.addFile(kSource + QStringLiteral("/local-server/runtime.json"), "shipped");
    }
    const VersionAssembly assembly{.source = kSource,
                                   .work = QStringLiteral("/s/staging/1-U"),
                                   .versions = QStringLiteral("/s/versions"),
                                   .destination = QStringLiteral("/s/versions/1"),
                                   .metadata = "written"};
};

TEST_F(Assembling, CopiesWritesAndMovesInThisOrder) {
    files.addFile(assembly.work + QStringLiteral("/left"));
    files.addFile(assembly.destination + QStringLiteral("/old"));
    assembleVersion(files, assembly);
    EXPECT_EQ(files.changes,
              (QStringList{
                  QStringLiteral("remove /s/staging/1-U"),
                  QStringLiteral("create /s/staging/1-U"),
                  QStringLiteral("copy /source/local-server /s/staging/1-U/local-server"),
                  QStringLiteral("copy /source/node-runtime /s/staging/1-U/node-runtime"),
                  QStringLiteral("remove /s/staging/1-U/local-server/runtime.json"),
                  QStringLiteral("create /s/staging/1-U/local-server"),
                  QStringLiteral("write /s/staging/1-U/local-server/runtime.json"),
                  QStringLiteral("remove /s/versions/1"),
                  QStringLiteral("create /s/versions"),
                  QStringLiteral("move /s/staging/1-U /s/versions/1"),
              }));
    EXPECT_EQ(files.namesIn(assembly.destination),
              (QStringList{QStringLiteral("local-server"), QStringLiteral("node-runtime")}));
    EXPECT_EQ(files.bytesOf(QStringLiteral("/s/versions/1/local-server/runtime.json")), "written");
    EXPECT_TRUE(files.isExecutableFile(QStringLiteral("/s/versions/1/node-runtime/node")));
    EXPECT_TRUE(files.namesIn(QStringLiteral("/s/staging")).isEmpty());
}

class FailedAssembly : public Assembling, public ::testing::WithParamInterface<const char*> {};

TEST_P(FailedAssembly, IsPassedOnAndLeavesTheScratchDirectory) {
    files.failures[GetParam()] = QStringLiteral("Broken.");
    files.addFile(assembly.destination + QStringLiteral("/old"));
    try {
        assembleVersion(files, assembly);
        ADD_FAILURE() << "nothing was thrown";
    } catch (const PlatformError& error) {
        EXPECT_EQ(error.description(), QStringLiteral("Broken."));
    }
    EXPECT_TRUE(files.isDirectory(assembly.work) == (std::string(GetParam()) != "createDirectory"));
    EXPECT_FALSE(files.isDirectory(assembly.destination + QStringLiteral("/local-server")));
}

INSTANTIATE_TEST_SUITE_P(Steps, FailedAssembly,
                         ::testing::Values("createDirectory",
                                           "copyItem /s/staging/1-U/local-server",
                                           "copyItem /s/staging/1-U/node-runtime", "writeFile",
                                           "removeItem /s/versions/1",
                                           "createDirectory /s/versions", "moveItem"));

} // namespace orvanta
