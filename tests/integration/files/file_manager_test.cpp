// SPDX-License-Identifier: MIT
#include "platform/posix/file_manager.h"

#include "base/platform_error.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <cerrno>
#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace orvanta {
namespace {

class PosixFileManagerTest : public ::testing::Test {
protected:
    QString path(const char* name) const { return m_directory.filePath(QString::fromUtf8(name)); }
    static QByteArray native(const QString& path) { return QFile::encodeName(path); }

    QString write(const char* name, const QByteArray& bytes, mode_t mode = 0644) const {
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        EXPECT_EQ(file.write(bytes), bytes.size());
        file.close();
        EXPECT_EQ(::chmod(native(path(name)).constData(), mode), 0);
        return path(name);
    }

    static mode_t modeOf(const QString& path) {
        struct stat status {};
        EXPECT_EQ(::stat(native(path).constData(), &status), 0);
        return status.st_mode & 07777;
    }

    QStringList names() const {
        return QDir(m_directory.path())
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    }

    /// Expects `operation` to fail with the system's `code` and this sentence.
    template <typename Operation>
    void expectFailure(int code, const QString& sentence, const Operation& operation) {
        try {
            operation();
            ADD_FAILURE() << "did not fail: " << sentence.toStdString();
        } catch (const PlatformError& error) {
            EXPECT_EQ(error.domain(), QStringLiteral("posix"));
            EXPECT_EQ(error.code(), code);
            EXPECT_EQ(error.description(), sentence);
        }
    }

    void expectUnreadable(const QString& path, int code, const char* reason) {
        expectFailure(
            code,
            QStringLiteral("“%1” could not be read: %2.").arg(path, QString::fromUtf8(reason)),
            [&] { m_files.readFile(path); });
    }

    void expectUncreatable(const QString& path, int code, const char* reason) {
        expectFailure(code,
                      QStringLiteral("The folder “%1” could not be created: %2.")
                          .arg(path, QString::fromUtf8(reason)),
                      [&] { m_files.createDirectory(path); });
    }

    void expectUncopyable(const QString& from, const QString& to, int code, const char* reason) {
        expectFailure(code,
                      QStringLiteral("“%1” could not be copied to “%2”: %3.")
                          .arg(from, to, QString::fromUtf8(reason)),
                      [&] { m_files.copyItem(from, to); });
    }

    QTemporaryDir m_directory;
    PosixFileManager m_files;
};

TEST_F(PosixFileManagerTest, CreatesFoldersWithAllThatLeadsThere) {
    const QString folder = path("a/b ü/c");
    const mode_t before = ::umask(027);
    m_files.createDirectory(folder);
    ::umask(before);
    EXPECT_TRUE(QFileInfo(folder).isDir());
    EXPECT_EQ(modeOf(folder), 0750U);
    EXPECT_EQ(modeOf(path("a")), 0750U);
}

TEST_F(PosixFileManagerTest, AnExistingFolderIsNoError) {
    m_files.createDirectory(path("a"));
    m_files.createDirectory(path("a"));
    m_files.createDirectory(path("a/"));
    m_files.createDirectory(QStringLiteral("/"));
    ASSERT_EQ(::symlink(native(path("a")).constData(), native(path("link")).constData()), 0);
    m_files.createDirectory(path("link"));
    m_files.createDirectory(path("link/b"));
    EXPECT_TRUE(QFileInfo(path("a/b")).isDir());
}

TEST_F(PosixFileManagerTest, TellsWhyAFolderCannotBeCreated) {
    write("file", "x");
    expectUncreatable(path("file"), EEXIST, "File exists");
    expectUncreatable(path("file/a/b"), ENOTDIR, "Not a directory");
    ASSERT_EQ(::symlink("nowhere", native(path("link")).constData()), 0);
    expectUncreatable(path("link"), EEXIST, "File exists");
    expectUncreatable(QString(), ENOENT, "No such file or directory");
    const QString tooLong = path("d") + QString(300, u'x');
    expectUncreatable(tooLong, ENAMETOOLONG, "File name too long");
}

TEST_F(PosixFileManagerTest, KnowsWhatExists) {
    write("file", "");
    EXPECT_TRUE(m_files.itemExists(path("file")));
    EXPECT_TRUE(m_files.itemExists(m_directory.path()));
    EXPECT_FALSE(m_files.itemExists(path("other")));
    EXPECT_FALSE(m_files.itemExists(path("file/below")));
    EXPECT_FALSE(m_files.itemExists(QString()));
    ASSERT_EQ(::mkfifo(native(path("pipe")).constData(), 0600), 0);
    EXPECT_TRUE(m_files.itemExists(path("pipe")));
    ASSERT_EQ(::symlink("file", native(path("link")).constData()), 0);
    EXPECT_TRUE(m_files.itemExists(path("link")));
    ASSERT_EQ(::symlink("nowhere", native(path("dangling")).constData()), 0);
    EXPECT_FALSE(m_files.itemExists(path("dangling")));
}

TEST_F(PosixFileManagerTest, KnowsWhatCanBeExecuted) {
    EXPECT_TRUE(m_files.isExecutableFile(write("program", "x", 0755)));
    EXPECT_TRUE(m_files.isExecutableFile(write("mine", "x", 0700)));
    EXPECT_FALSE(m_files.isExecutableFile(write("text", "x", 0644)));
    EXPECT_FALSE(m_files.isExecutableFile(m_directory.path()));
    EXPECT_FALSE(m_files.isExecutableFile(path("other")));
    EXPECT_FALSE(m_files.isExecutableFile(path("program/below")));
    ASSERT_EQ(::symlink("program", native(path("link")).constData()), 0);
    EXPECT_TRUE(m_files.isExecutableFile(path("link")));
    ASSERT_EQ(::mkfifo(native(path("pipe")).constData(), 0777), 0);
    EXPECT_FALSE(m_files.isExecutableFile(path("pipe")));
}

TEST_F(PosixFileManagerTest, ReadsWholeFiles) {
    QByteArray bytes(300000, '\0');
    for (qsizetype i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<char>(i * 7 >> 3);
    }
    EXPECT_EQ(m_files.readFile(write("ü", bytes)), bytes);
    EXPECT_EQ(m_files.readFile(write("empty", "")), QByteArray());
    for (const qsizetype size : {1, 300, 65535, 65536, 65537}) {
        EXPECT_EQ(m_files.readFile(write("some", bytes.left(size))), bytes.left(size)) << size;
    }
}

TEST_F(PosixFileManagerTest, ReadsFilesThatDoNotTellTheirSize) {
    const QString commandLine = QStringLiteral("/proc/self/cmdline");
    if (!QFile::exists(commandLine)) {
        GTEST_SKIP() << "NOT RUN: no file here hides its size; /proc has such files.";
    }
    const QByteArray program = m_files.readFile(commandLine).split('\0').first();
    EXPECT_TRUE(program.endsWith("files_test")) << program.constData();
}

TEST_F(PosixFileManagerTest, TellsWhyAFileCannotBeRead) {
    expectUnreadable(path("none"), ENOENT, "No such file or directory");
    expectUnreadable(m_directory.path(), EISDIR, "Is a directory");
    write("file", "x");
    expectUnreadable(path("file/below"), ENOTDIR, "Not a directory");
    ASSERT_EQ(::mkfifo(native(path("pipe")).constData(), 0600), 0);
    expectUnreadable(path("pipe"), EINVAL, "Invalid argument");
    expectUnreadable(QStringLiteral("/dev/zero"), EINVAL, "Invalid argument");
}

TEST_F(PosixFileManagerTest, ReadsUpToTheLimitAndNoFurther) {
    constexpr off_t kLimit = 64 * 1024 * 1024;
    write("large", "");
    ASSERT_EQ(::truncate(native(path("large")).constData(), kLimit), 0);
    EXPECT_EQ(m_files.readFile(path("large")).size(), kLimit);
    ASSERT_EQ(::truncate(native(path("large")).constData(), kLimit + 1), 0);
    expectUnreadable(path("large"), EFBIG, "File too large");
    m_files.copyItem(path("large"), path("copy"));
    EXPECT_EQ(QFileInfo(path("copy")).size(), kLimit + 1);
    QFile::remove(path("copy"));
    EXPECT_EQ(names(), QStringList{QStringLiteral("large")});
}

TEST_F(PosixFileManagerTest, CopiesBytesAndMode) {
    const QByteArray bytes = QByteArray(200000, 'x') + QByteArray("\0\xFF", 2);
    const mode_t before = ::umask(077);
    for (const mode_t mode : {0644U, 0755U, 0600U, 0444U}) {
        const QString from = write("from", bytes, mode);
        m_files.copyItem(from, path("to"));
        EXPECT_EQ(m_files.readFile(path("to")), bytes);
        EXPECT_EQ(modeOf(path("to")), mode);
        EXPECT_EQ(names(), (QStringList{QStringLiteral("from"), QStringLiteral("to")}));
        QFile::remove(path("from"));
        QFile::remove(path("to"));
    }
    ::umask(before);
}

TEST_F(PosixFileManagerTest, NeverReplacesWhatIsThere) {
    write("from", "new");
    write("to", "old");
    expectUncopyable(path("from"), path("to"), EEXIST, "File exists");
    EXPECT_EQ(m_files.readFile(path("to")), "old");
    expectUncopyable(path("from"), path("from"), EEXIST, "File exists");
    ASSERT_EQ(::symlink("nowhere", native(path("link")).constData()), 0);
    expectUncopyable(path("from"), path("link"), EEXIST, "File exists");
    EXPECT_FALSE(m_files.itemExists(path("nowhere")));
    EXPECT_EQ(names().size(), 3);
}

TEST_F(PosixFileManagerTest, TellsWhyAFileCannotBeCopied) {
    write("from", "x");
    expectUncopyable(path("none"), path("to"), ENOENT, "No such file or directory");
    expectUncopyable(path("from"), path("none/to"), ENOENT, "No such file or directory");
    expectUncopyable(path("from"), path("from/to"), ENOTDIR, "Not a directory");
    EXPECT_EQ(names(), QStringList{QStringLiteral("from")});
}

/// Files of this process cannot grow beyond `size` while it lives.
class FullDisk {
public:
    explicit FullDisk(rlim_t size) {
        ::signal(SIGXFSZ, SIG_IGN);
        ::getrlimit(RLIMIT_FSIZE, &m_before);
        rlimit limit = m_before;
        limit.rlim_cur = size;
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk() { ::setrlimit(RLIMIT_FSIZE, &m_before); }

private:
    rlimit m_before{};
};

TEST_F(PosixFileManagerTest, LeavesNothingOfACopyThatFailsMidway) {
    write("from", QByteArray(200000, 'x'));
    {
        const FullDisk fullDisk(100000);
        expectUncopyable(path("from"), path("to"), EFBIG, "File too large");
    }
    EXPECT_EQ(names(), QStringList{QStringLiteral("from")});
    m_files.copyItem(path("from"), path("to"));
    EXPECT_EQ(m_files.readFile(path("to")).size(), 200000);
}

} // namespace
} // namespace orvanta
