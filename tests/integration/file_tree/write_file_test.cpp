// SPDX-License-Identifier: MIT
#include "base/json.h"
#include "integration/file_tree/file_tree_test.h"

#include <csignal>
#include <fcntl.h>
#include <random>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/wait.h>

namespace orvanta {
namespace {

/// A record of `size` bytes.
QByteArray record(qsizetype size) {
    const QByteArray frame = "{\"version\" : \"\"}";
    return QByteArray(frame).insert(frame.size() - 2, QByteArray(size - frame.size(), 'v'));
}

class WriteFileTest : public FileTreeTest {
protected:
    std::string writeFailure(const QByteArray& name, const QByteArray& bytes) const {
        return failureOf([&] { PosixFileManager().writeFile(path(name), bytes); });
    }

    /// Runs `body` in a process of its own and returns its exit status.
    template <typename Body>
    static int inChild(const Body& body) {
        const pid_t child = ::fork();
        if (child == 0) {
            ::_exit(body());
        }
        int status = 0;
        EXPECT_EQ(::waitpid(child, &status, 0), child);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    pid_t startOverwriting(qsizetype oneSize, qsizetype otherSize) const {
        const pid_t child = ::fork();
        if (child == 0) {
            const QByteArray one = record(oneSize);
            const QByteArray other = record(otherSize);
            PosixFileManager files;
            while (true) {
                files.writeFile(path("record"), one);
                files.writeFile(path("record"), other);
            }
        }
        return child;
    }

    /// Kills such a process `times` times at random instants.
    void killAndLook(int times, qsizetype oneSize, qsizetype otherSize) const {
        static std::minstd_rand random(20261121);
        std::uniform_int_distribution<useconds_t> instant(0, 3000);
        int blanks = 0;
        for (int i = 0; i < times; ++i) {
            const pid_t child = startOverwriting(oneSize, otherSize);
            ::usleep(instant(random));
            ASSERT_EQ(::kill(child, SIGKILL), 0);
            ASSERT_EQ(::waitpid(child, nullptr, 0), child);
            const QByteArray left = contentsOf("record");
            blanks += left.endsWith(' ') ? 1 : 0;
            ASSERT_NO_THROW(JsonReader::parse(left)) << left.size() << " bytes, kill " << i;
            const qsizetype length = left.trimmed().size();
            ASSERT_TRUE(length == oneSize || length == otherSize) << length;
        }
        RecordProperty("records with blanks left", blanks);
    }
};

TEST_F(WriteFileTest, WritesWhatItIsGiven) {
    const mode_t before = ::umask(027);
    m_files.writeFile(path("record"), "{}");
    ::umask(before);
    EXPECT_EQ(contentsOf("record"), "{}");
    EXPECT_EQ(modeOf("record"), 0640U);
    const QByteArray large = QByteArray(5'000'000, '\0') + "end";
    for (const QByteArray& bytes : {record(100), record(40), record(4096), QByteArray(),
                                    record(4097), large, record(4095), QByteArray("{}")}) {
        m_files.writeFile(path("record"), bytes);
        EXPECT_EQ(contentsOf("record"), bytes);
    }
    EXPECT_EQ(m_files.contentsOfDirectory(m_directory.path()),
              QStringList{QStringLiteral("record")});
}

TEST_F(WriteFileTest, OverwritesInPlace) {
    makeFile("record", record(100), 0600);
    ASSERT_EQ(::link(native("record").constData(), native("second").constData()), 0);
    makeLink("record", "link");
    m_files.writeFile(path("link"), record(300));
    EXPECT_EQ(contentsOf("second"), record(300));
    EXPECT_TRUE(S_ISLNK(statusOf("link").st_mode));
    EXPECT_EQ(modeOf("record"), 0600U);
    // Longer than a page it is another file, but the same mode and the same place.
    m_files.writeFile(path("link"), record(9000));
    EXPECT_EQ(contentsOf("record"), record(9000));
    EXPECT_TRUE(S_ISLNK(statusOf("link").st_mode));
    EXPECT_EQ(modeOf("record"), 0600U);
}

TEST_F(WriteFileTest, SaysWhyNothingCouldBeWritten) {
    makeDirectory("folder");
    ASSERT_EQ(::mkfifo(native("pipe").constData(), 0600), 0);
    EXPECT_EQ(writeFailure("folder", "x"), "“~/folder” could not be written: Is a directory.");
    EXPECT_EQ(writeFailure("none/x", "x"),
              "“~/none/x” could not be written: No such file or directory.");
    EXPECT_EQ(writeFailure("pipe", "x"),
              "“~/pipe” could not be written: No such device or address.");
}

TEST_F(WriteFileTest, AKillAtAnyInstantLeavesARecordThatDecodes) {
    m_files.writeFile(path("record"), record(90));
    killAndLook(300, 90, 900);
}

TEST_F(WriteFileTest, AKillLeavesADecodingRecordOfAnySize) {
    m_files.writeFile(path("record"), record(90));
    killAndLook(100, 90, 4096);
    killAndLook(100, 90, 20000);
    m_files.writeFile(path("record"), record(200000));
    killAndLook(50, 200000, 300000);
}

TEST_F(WriteFileTest, AKillNeverLeavesANewFileHalfWritten) {
    const QByteArray bytes = record(2000);
    for (int i = 0; i < 200; ++i) {
        const pid_t child = ::fork();
        if (child == 0) {
            PosixFileManager files;
            while (true) {
                files.writeFile(path("new"), bytes);
                ::unlink(native("new").constData());
            }
        }
        ::usleep(static_cast<useconds_t>(i) * 10);
        ::kill(child, SIGKILL);
        ASSERT_EQ(::waitpid(child, nullptr, 0), child);
        if (exists("new")) {
            ASSERT_EQ(contentsOf("new"), bytes);
        }
    }
}

TEST_F(WriteFileTest, AFileThatCannotGrowKeepsItsContents) {
    m_files.writeFile(path("record"), record(200));
    const int status = inChild([this] {
        ::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{1000, 1000};
        ::setrlimit(RLIMIT_FSIZE, &limit);
        return writeFailure("record", record(3000)) ==
                           "“~/record” could not be written: File too large." &&
                       writeFailure("record", record(5000)) != "" &&
                       writeFailure("new", record(3000)) != ""
                   ? 0
                   : 1;
    });
    EXPECT_EQ(status, 0);
    EXPECT_EQ(contentsOf("record"), record(200));
    EXPECT_EQ(m_files.contentsOfDirectory(m_directory.path()),
              QStringList{QStringLiteral("record")});
}

constexpr int kNoDisk = 77;

/// A disk of 64 KiB at `place`, for this process alone.
bool mountSmallDisk(const QByteArray& place) {
    const int spaces = ::geteuid() == 0 ? CLONE_NEWNS : CLONE_NEWUSER | CLONE_NEWNS;
    return ::unshare(spaces) == 0 &&
           ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           ::mount("tmpfs", place.constData(), "tmpfs", 0, "size=64k") == 0;
}

void fillDisk(const QByteArray& file) {
    const int filler = ::open(file.constData(), O_WRONLY | O_CREAT, 0600);
    const QByteArray page(4096, 'x');
    while (::write(filler, page.constData(), 4096) > 0) {
    }
    ::close(filler);
}

TEST_F(WriteFileTest, AFullDiskKeepsTheOldRecord) {
    makeDirectory("disk");
    const int status = inChild([this] {
        if (!mountSmallDisk(native("disk"))) {
            return kNoDisk;
        }
        PosixFileManager files;
        files.writeFile(path("disk/record"), record(200));
        fillDisk(native("disk/filler"));
        const bool told = writeFailure("disk/record", record(9000)) ==
                              "“~/disk/record” could not be written: No space left on device." &&
                          writeFailure("disk/new", record(100)) ==
                              "“~/disk/new” could not be written: No space left on device.";
        const bool kept = contentsOf("disk/record") == record(200) && !exists("disk/new") &&
                          files.contentsOfDirectory(path("disk")).size() == 2;
        files.writeFile(path("disk/record"), record(3000));
        return told && kept && contentsOf("disk/record") == record(3000) ? 0 : 1;
    });
    if (status == kNoDisk) {
        GTEST_SKIP() << "NOT RUN: this user may not mount a small disk.";
    }
    EXPECT_EQ(status, 0);
}

} // namespace
} // namespace orvanta
