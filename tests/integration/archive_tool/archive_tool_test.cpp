// SPDX-License-Identifier: MIT
#include "platform/linux/archive_tool.h"

#include "base/platform_error.h"
#include "platform/posix/file_manager.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <csignal>
#include <map>
#include <sys/stat.h>
#include <unistd.h>

namespace orvanta {
namespace {

/// Path below a folder to "TYPEMODE SIZE".
using Tree = std::map<std::string, std::string>;

struct stat statusOf(const QString& path) {
    struct stat status {};
    ::lstat(QFile::encodeName(path).constData(), &status);
    return status;
}

/// What was changed at any time after the snapshot shows up as a difference.
std::string snapshotOf(const QString& path) {
    const struct stat status = statusOf(path);
    QFile file(path);
    return std::to_string(status.st_mode) + ' ' + std::to_string(status.st_ino) + ' ' +
           std::to_string(status.st_ctim.tv_sec) + '.' + std::to_string(status.st_ctim.tv_nsec) +
           (file.open(QIODevice::ReadOnly) ? file.readAll().toStdString() : "");
}

class ArchiveToolTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        s_folder = new QTemporaryDir;
        ASSERT_TRUE(QDir(s_folder->path()).mkpath(QStringLiteral("zips")));
        ASSERT_EQ(QProcess::execute(QStringLiteral(NODE_PROGRAM),
                                    {QStringLiteral(MAKE_ZIPS), inFolder("zips"), outside()}),
                  0);
    }
    static void TearDownTestSuite() {
        PosixFileManager().removeItem(s_folder->path());
        delete s_folder;
        s_folder = nullptr;
    }

    void SetUp() override {
        for (const QString& folder : {inFolder("work"), outside()}) {
            if (QDir(folder).exists()) {
                PosixFileManager().removeItem(folder);
            }
        }
        QDir(s_folder->path()).mkdir(QStringLiteral("work"));
        QDir(s_folder->path()).mkdir(QStringLiteral("outside"));
        QFile existing(outside() + QStringLiteral("/existing"));
        ASSERT_TRUE(existing.open(QIODevice::WriteOnly));
        existing.write("old");
        existing.close();
        m_before = surroundings();
    }

    void TearDown() override { EXPECT_EQ(surroundings(), m_before) << "something outside changed"; }

    static QString inFolder(const char* name) {
        return s_folder->path() + u'/' + QString::fromUtf8(name);
    }
    static QString outside() { return inFolder("outside"); }

    static std::map<QString, std::string> surroundings() {
        std::map<QString, std::string> found;
        for (const QString& name : QDir(s_folder->path())
                                       .entryList(QDir::AllEntries | QDir::Hidden | QDir::System |
                                                  QDir::NoDotAndDotDot)) {
            found[name] =
                name == QStringLiteral("work") ? "" : snapshotOf(s_folder->path() + u'/' + name);
        }
        for (const QString& name : QDir(outside()).entryList(QDir::Files | QDir::Hidden)) {
            found[QStringLiteral("outside/") + name] = snapshotOf(outside() + u'/' + name);
        }
        return found;
    }

    int extract(const char* name) {
        return m_tool.extractZip(
            inFolder("zips/") + QString::fromUtf8(name) + QStringLiteral(".zip"), inFolder("work"));
    }

    /// With a shell script in place of the tool.
    int extractWithScript(const QByteArray& commands) {
        const QString path = inFolder("work/tool");
        QFile script(path);
        EXPECT_TRUE(script.open(QIODevice::WriteOnly));
        script.write("#!/bin/sh\nPATH=/usr/bin:/bin\n" + commands + '\n');
        script.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        script.close();
        return BsdtarArchiveTool(path).extractZip(inFolder("zips/plain.zip"), inFolder("work"));
    }

    static Tree tree() {
        Tree found;
        QDirIterator items(inFolder("work"),
                           QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                           QDirIterator::Subdirectories);
        while (items.hasNext()) {
            const struct stat status = statusOf(items.next());
            const QString path = items.filePath().mid(inFolder("work").size() + 1);
            found[path.toStdString()] = QString::number(status.st_mode, 8).toStdString();
        }
        return found;
    }

    static QTemporaryDir* s_folder;
    std::map<QString, std::string> m_before;
    BsdtarArchiveTool m_tool;
};

QTemporaryDir* ArchiveToolTest::s_folder = nullptr;

TEST_F(ArchiveToolTest, ExtractsTreesWithModesAndLinks) {
    const mode_t before = ::umask(022);
    EXPECT_EQ(extract("plain"), 0);
    ::umask(before);
    Tree expected{{"bin", "40755"},   {"bin/node", "100755"}, {"text", "100640"},
                  {"link", "120777"}, {"packed", "100644"},   {"ü☃", "100644"}};
    Tree found = tree();
    EXPECT_EQ(found.size(), expected.size());
    // A name that is not UTF-8 is no text to Qt.
    EXPECT_EQ(::access((QFile::encodeName(inFolder("work/")) + "\xFC").constData(), R_OK), 0);
    for (const auto& [name, mode] : expected) {
        EXPECT_EQ(found[name], mode) << name;
    }
    QFile packed(inFolder("work/packed"));
    ASSERT_TRUE(packed.open(QIODevice::ReadOnly));
    EXPECT_EQ(packed.readAll(), QByteArray(100000, 'z'));
    EXPECT_EQ(QFile(inFolder("work/link")).symLinkTarget(), inFolder("work/bin/node"));
}

TEST_F(ArchiveToolTest, ExtractsAnEmptyArchive) {
    EXPECT_EQ(extract("nothing"), 0);
    EXPECT_TRUE(tree().empty());
}

TEST_F(ArchiveToolTest, RefusesNamesThatClimbOut) {
    EXPECT_NE(extract("dot-dot"), 0);
    EXPECT_NE(extract("deep-dot-dot"), 0);
    EXPECT_NE(extract("backslash-dot-dot"), 0);
}

TEST_F(ArchiveToolTest, TakesAbsoluteNamesAsRelativeOnes) {
    EXPECT_EQ(extract("absolute"), 0);
    EXPECT_EQ(tree().count(outside().mid(1).toStdString() + "/existing"), 1U);
}

TEST_F(ArchiveToolTest, NeverGoesThroughALink) {
    for (const char* name : {"through-link", "through-relative-link", "through-two-links"}) {
        EXPECT_NE(extract(name), 0) << name;
        TearDown();
        SetUp();
    }
    for (const char* name :
         {"over-link", "folder-over-link", "link-over-folder", "link-over-filled-folder"}) {
        extract(name);
        TearDown();
        SetUp();
    }
}

TEST_F(ArchiveToolTest, KnowsWhichPartCanStandAlone) {
    EXPECT_EQ(extract("neighbours"), 0);
    EXPECT_TRUE(m_tool.isSelfContained(inFolder("work")));
    EXPECT_FALSE(m_tool.isSelfContained(inFolder("work/one")));
    EXPECT_TRUE(m_tool.isSelfContained(inFolder("work/other")));
    EXPECT_FALSE(m_tool.isSelfContained(inFolder("work/none")));
}

TEST_F(ArchiveToolTest, DropsTheBitsThatGiveRightsAway) {
    EXPECT_EQ(extract("set-uid"), 0);
    for (const auto& [name, mode] : tree()) {
        EXPECT_EQ(QByteArray::fromStdString(mode).toInt(nullptr, 8) & 07000, 0) << name;
    }
    EXPECT_EQ(tree().size(), 3U);
}

TEST_F(ArchiveToolTest, FailsForDevices) {
    EXPECT_NE(extract("character-device"), 0);
    EXPECT_NE(extract("block-device"), 0);
}

TEST_F(ArchiveToolTest, FailsForWhatIsDamagedOrLocked) {
    for (const char* name :
         {"encrypted", "locked-with-none", "locked-with-none-and-packed", "wrong-sum",
          "cut-in-member", "cut-in-directory", "cut-in-end", "no-bytes", "page", "none"}) {
        EXPECT_NE(extract(name), 0) << name;
    }
}

TEST_F(ArchiveToolTest, FailsForArchivesOfOtherKinds) {
    QFile(outside() + QStringLiteral("/existing")).copy(inFolder("zips/existing"));
    ASSERT_EQ(
        QProcess::execute(QStringLiteral("/usr/bin/bsdtar"),
                          {QStringLiteral("-cf"), inFolder("zips/tar.zip"), QStringLiteral("-C"),
                           inFolder("zips"), QStringLiteral("existing")}),
        0);
    m_before = surroundings();
    EXPECT_NE(extract("tar"), 0);
    EXPECT_TRUE(tree().empty());
}

TEST_F(ArchiveToolTest, ExtractsAHundredThousandEntries) {
    EXPECT_EQ(extract("many"), 0);
    EXPECT_EQ(tree().size(), 100100U);
}

TEST_F(ArchiveToolTest, FailsWhereItMayNotWrite) {
    EXPECT_NE(m_tool.extractZip(inFolder("zips/plain.zip"), inFolder("nowhere")), 0);
}

TEST_F(ArchiveToolTest, SaysThatTheToolCannotBeStarted) {
    BsdtarArchiveTool tool(QStringLiteral("/nonexistent/bsdtar"));
    try {
        tool.extractZip(inFolder("zips/plain.zip"), inFolder("work"));
        ADD_FAILURE() << "did not fail";
    } catch (const PlatformError& error) {
        EXPECT_EQ(error.description().toStdString(),
                  "“/nonexistent/bsdtar” could not be started: No such file or directory.");
    }
}

TEST_F(ArchiveToolTest, ReportsTheStatusOfTheTool) {
    EXPECT_EQ(BsdtarArchiveTool(QStringLiteral("/bin/false"))
                  .extractZip(inFolder("zips/plain.zip"), inFolder("work")),
              1);
    EXPECT_EQ(extractWithScript("kill -TERM $$"), 128 + SIGTERM);
}

TEST_F(ArchiveToolTest, TheToolGetsNothingOfOurs) {
    ASSERT_EQ(::dup2(STDERR_FILENO, 200), 200);
    ::signal(SIGPIPE, SIG_IGN);
    // Inherited descriptors, ignored signals, variables, the session and with it the terminal.
    EXPECT_EQ(extractWithScript("test -e /proc/$$/fd/200 && exit 2\n"
                                "test -z \"$HOME\" || exit 3\n"
                                "test \"$(cut -d' ' -f6 /proc/$$/stat)\" = $$ || exit 4\n"
                                "grep -q '^SigIgn:.*0000$' /proc/$$/status || exit 5\n"
                                "test \"$(readlink /proc/$$/fd/2)\" = /dev/null || exit 6"),
              0);
    ::close(200);
}

} // namespace
} // namespace orvanta
