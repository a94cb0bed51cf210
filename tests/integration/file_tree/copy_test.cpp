// SPDX-License-Identifier: MIT
#include "integration/file_tree/file_tree_test.h"
#include "platform/posix/per_system_files.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <algorithm>

namespace orvanta {
namespace {

class CopyTest : public FileTreeTest {
protected:
    void setTime(const QByteArray& name, time_t seconds, long nanoseconds) const {
        const timespec times[2] = {{seconds, nanoseconds}, {seconds, nanoseconds}};
        ASSERT_EQ(::utimensat(AT_FDCWD, native(name).constData(), times, AT_SYMLINK_NOFOLLOW), 0);
    }

    void expectSameStatus(const QByteArray& one, const QByteArray& other) const {
        EXPECT_EQ(statusOf(one).st_mode, statusOf(other).st_mode) << one.constData();
        EXPECT_EQ(statusOf(one).st_mtime, statusOf(other).st_mtime) << one.constData();
    }

    std::string copyFailure() const {
        return failureOf([this] { PosixFileManager().copyItem(path("from"), path("to")); });
    }
};

TEST_F(CopyTest, KeepsContentsModesTimesAndLinks) {
    QByteArray bytes(3'000'000, '\0');
    for (qsizetype i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<char>((i * 2654435761U) >> 13);
    }
    makeDirectory("from");
    makeDirectory("from/bin", 0750);
    makeDirectory("from/empty", 0711);
    makeFile("from/bin/node", bytes, 0755);
    makeFile("from/secret", "s", 0600);
    makeFile("from/.hidden", "", 0444);
    makeLink("bin/node", "from/link");
    makeLink("/nonexistent/outside", "from/bin/dangling");
    makeLink("bin", "from/folder-link");
    const QList<QByteArray> items = {"/bin/node", "/secret",       "/.hidden",
                                     "/link",     "/bin/dangling", "/folder-link",
                                     "/empty",    "/bin",          ""};
    for (qsizetype i = 0; i < items.size(); ++i) {
        setTime("from" + items[i], 1'000'000'000 + i, 123'456'789);
    }
    const mode_t before = ::umask(077);
    m_files.copyItem(path("from"), path("to"));
    ::umask(before);

    for (const QByteArray& item : items) {
        expectSameStatus("from" + item, "to" + item);
    }
    EXPECT_EQ(timesOf(statusOf("to/bin/node"))[1].tv_nsec, 123'456'789);
    EXPECT_EQ(contentsOf("to/bin/node"), bytes);
    EXPECT_EQ(contentsOf("to/.hidden"), "");
    EXPECT_EQ(QFile(path("to/link")).symLinkTarget(), path("to/bin/node"));
    EXPECT_EQ(QFile(path("to/bin/dangling")).symLinkTarget(),
              QStringLiteral("/nonexistent/outside"));
    EXPECT_EQ(m_files.contentsOfDirectory(path("to")).size(), 6);
}

TEST_F(CopyTest, CopiesDirectoriesThatForbidWriting) {
    makeDirectory("from");
    makeDirectory("from/locked");
    makeFile("from/locked/file", "x", 0400);
    ASSERT_EQ(::chmod(native("from/locked").constData(), 0500), 0);
    m_files.copyItem(path("from"), path("to"));
    EXPECT_EQ(modeOf("to/locked"), 0500U);
    EXPECT_EQ(modeOf("to/locked/file"), 0400U);
    // QTemporaryDir could not.
    m_files.removeItem(path("from"));
    m_files.removeItem(path("to"));
}

TEST_F(CopyTest, NeverGivesTheRightsOfTheOwnerAway) {
    makeDirectory("from");
    makeFile("from/program", "x", 06755);
    m_files.copyItem(path("from"), path("to"));
    EXPECT_EQ(modeOf("to/program"), 0755U);
}

TEST_F(CopyTest, KeepsNamesThatAreNotText) {
    makeDirectory("from");
    makeDirectory("from/\xFF\xFE");
    makeFile("from/\xFF\xFE/\xC3", "x");
    m_files.copyItem(path("from"), path("to"));
    EXPECT_TRUE(exists("to/\xFF\xFE/\xC3"));
    // QTemporaryDir could not.
    m_files.removeItem(path("to"));
    m_files.removeItem(path("from"));
    EXPECT_FALSE(exists("to"));
}

TEST_F(CopyTest, CopiesToAnotherFileSystem) {
    const QTemporaryDir elsewhere(QStringLiteral("/dev/shm/file_tree_test-XXXXXX"));
    struct stat other {};
    makeDirectory("from");
    if (::stat(QFile::encodeName(elsewhere.path()).constData(), &other) != 0 ||
        other.st_dev == statusOf("from").st_dev) {
        GTEST_SKIP() << "NOT RUN: there is no other file system at /dev/shm.";
    }
    makeFile("from/file", QByteArray(300'000, 'x'), 0751);
    const QString to = elsewhere.filePath(QStringLiteral("to"));
    m_files.copyItem(path("from"), to);
    m_files.copyItem(path("from/file"), to + QStringLiteral("/single"));
    for (const char* name : {"/file", "/single"}) {
        EXPECT_EQ(m_files.readFile(to + QLatin1String(name)), QByteArray(300'000, 'x'));
        EXPECT_TRUE(m_files.isExecutableFile(to + QLatin1String(name)));
    }
}

TEST_F(CopyTest, CopiesALinkAsSuch) {
    makeDirectory("folder");
    makeLink("folder", "from");
    setTime("from", 1'000'000'000, 0);
    m_files.copyItem(path("from"), path("to"));
    EXPECT_TRUE(S_ISLNK(statusOf("to").st_mode));
    EXPECT_EQ(statusOf("to").st_mtime, 1'000'000'000);
    EXPECT_EQ(copyFailure(), "“~/from” could not be copied to “~/to”: File exists.");
}

TEST_F(CopyTest, KeepsTheTimeOfASingleFile) {
    makeFile("from", "x", 0640);
    setTime("from", 1'000'000'000, 5);
    m_files.copyItem(path("from"), path("to"));
    expectSameStatus("from", "to");
}

TEST_F(CopyTest, NamesWhatIsNeitherFileNorFolderNorLink) {
    makeDirectory("from");
    makeDirectory("from/a");
    ASSERT_EQ(::mkfifo(native("from/a/pipe").constData(), 0600), 0);
    EXPECT_EQ(copyFailure(), "“~/from/a/pipe” could not be copied to “~/to/a/pipe”: It is neither "
                             "a file nor a folder nor a link.");
    m_files.removeItem(path("to"));
    m_files.removeItem(path("from/a/pipe"));

    const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const QByteArray name = native("from/a/socket");
    ASSERT_LT(static_cast<std::size_t>(name.size()), sizeof address.sun_path);
    std::copy(name.begin(), name.end(), address.sun_path);
    ASSERT_EQ(::bind(socket, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    ::close(socket);
    EXPECT_EQ(copyFailure(), "“~/from/a/socket” could not be copied to “~/to/a/socket”: It is "
                             "neither a file nor a folder nor a link.");
}

TEST_F(CopyTest, RefusesADestinationThatExists) {
    makeDirectory("from");
    makeFile("from/new", "x");
    makeDirectory("to");
    makeFile("to/old", "x");
    EXPECT_EQ(copyFailure(), "“~/from” could not be copied to “~/to”: File exists.");
    EXPECT_EQ(m_files.contentsOfDirectory(path("to")), QStringList{QStringLiteral("old")});
}

TEST_F(CopyTest, ACopyBelowTheOriginalDoesNotContainItself) {
    makeDirectory("from");
    makeFile("from/file", "x");
    m_files.copyItem(path("from"), path("from/copy"));
    EXPECT_EQ(m_files.contentsOfDirectory(path("from/copy")), QStringList{QStringLiteral("file")});
    makeDirectory("from/deep");
    EXPECT_EQ(failureOf([this] { m_files.copyItem(path("from"), path("from/deep/to")); }),
              "“~/from/deep/to” could not be copied to “~/from/deep/to/deep/to”: A folder cannot "
              "be copied into itself.");
}

TEST_F(CopyTest, MovesWithoutReplacing) {
    makeDirectory("from");
    makeFile("from/file", "x");
    const ino_t identity = statusOf("from").st_ino;
    m_files.moveItem(path("from"), path("to"));
    EXPECT_FALSE(exists("from"));
    EXPECT_EQ(statusOf("to").st_ino, identity);

    makeDirectory("empty");
    const auto move = [this](const char* from, const char* to) {
        return failureOf([&] { m_files.moveItem(path(from), path(to)); });
    };
    EXPECT_EQ(move("to", "empty"), "“~/to” could not be moved to “~/empty”: File exists.");
    EXPECT_EQ(move("none", "other"),
              "“~/none” could not be moved to “~/other”: No such file or directory.");
    makeLink("nowhere", "link");
    EXPECT_EQ(move("to", "link"), "“~/to” could not be moved to “~/link”: File exists.");
    m_files.moveItem(path("link"), path("moved"));
    EXPECT_TRUE(S_ISLNK(statusOf("moved").st_mode));
}

TEST_F(CopyTest, ListsAndRecognisesDirectories) {
    makeDirectory("a");
    makeFile("a/.b", "");
    makeFile("a/ü", "");
    makeLink("a", "link");
    makeFile("file", "");
    for (const char* name : {"a", "link"}) {
        QStringList names = m_files.contentsOfDirectory(path(name));
        names.sort();
        EXPECT_EQ(names, (QStringList{QStringLiteral(".b"), QStringLiteral("ü")}));
        EXPECT_TRUE(m_files.isDirectory(path(name)));
    }
    EXPECT_FALSE(m_files.isDirectory(path("file")));
    EXPECT_FALSE(m_files.isDirectory(path("none")));
    EXPECT_EQ(failureOf([this] { m_files.contentsOfDirectory(path("file")); }),
              "The folder “~/file” could not be listed: Not a directory.");
}

TEST_F(CopyTest, KnowsWhereLinksLead) {
    makeDirectory("a");
    makeFile("a/file", "");
    makeLink("a", "link");
    makeLink("none", "dangling");
    const QString real = QFileInfo(m_directory.path()).canonicalFilePath();
    EXPECT_EQ(m_files.behindLinks(path("link/file")), real + QStringLiteral("/a/file"));
    EXPECT_EQ(m_files.behindLinks(path("link")), real + QStringLiteral("/a"));
    EXPECT_EQ(m_files.behindLinks(path("a")), real + QStringLiteral("/a"));
    EXPECT_EQ(m_files.behindLinks(path("dangling")), path("dangling"));
    EXPECT_EQ(m_files.behindLinks(path("none")), path("none"));
}

} // namespace
} // namespace orvanta
