// SPDX-License-Identifier: MIT
#include "integration/file_tree/write_file_test.h"
#include "base/json.h"

#include <csignal>
#include <random>
#include <sys/resource.h>

namespace orvanta {
namespace {

class KillTest : public WriteFileTest {
protected:
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

TEST_F(KillTest, AKillAtAnyInstantLeavesARecordThatDecodes) {
    m_files.writeFile(path("record"), record(90));
    killAndLook(300, 90, 900);
}

TEST_F(KillTest, AKillLeavesADecodingRecordOfAnySize) {
    m_files.writeFile(path("record"), record(90));
    killAndLook(100, 90, 4096);
    // The last round may have left the longer one, and the next kill may come before any write.
    m_files.writeFile(path("record"), record(90));
    killAndLook(100, 90, 20000);
    m_files.writeFile(path("record"), record(200000));
    killAndLook(50, 200000, 300000);
}

TEST_F(KillTest, AKillNeverLeavesANewFileHalfWritten) {
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

} // namespace
} // namespace orvanta
