// SPDX-License-Identifier: MIT
#include "platform/curl/reply_body.h"
#include "platform/posix/file_descriptor.h"

#include <gtest/gtest.h>

#include <QTemporaryFile>

#include <fcntl.h>

namespace orvanta {
namespace {

using Progress = ReplyBody::Progress;

constexpr qsizetype kMebibyte = 1024 * 1024;

/// A pipe that holds bytes.
class Source {
public:
    Source() {
        int ends[2];
        if (::pipe(ends) != 0 || ::fcntl(ends[0], F_SETFL, O_NONBLOCK) != 0) {
            ADD_FAILURE() << "no pipe";
        }
        m_readEnd = FileDescriptor(ends[0]);
        m_writeEnd = FileDescriptor(ends[1]);
    }
    void write(const QByteArray& bytes) {
        EXPECT_EQ(::write(m_writeEnd.get(), bytes.constData(), bytes.size()), bytes.size());
    }
    void end() { m_writeEnd.reset(); }
    int descriptor() const { return m_readEnd.get(); }

private:
    FileDescriptor m_readEnd;
    FileDescriptor m_writeEnd;
};

TEST(ReplyBody, ReadsWhatIsThereAndSaysWhenThereIsNothing) {
    Source source;
    ReplyBody body(100, true);
    EXPECT_EQ(body.readFrom(source.descriptor()), Progress::NothingThere);
    source.write("one ");
    EXPECT_EQ(body.readFrom(source.descriptor()), Progress::Read);
    EXPECT_EQ(body.readFrom(source.descriptor()), Progress::NothingThere);
    source.write("two");
    EXPECT_EQ(body.readFrom(source.descriptor()), Progress::Read);
    source.end();
    EXPECT_EQ(body.readFrom(source.descriptor()), Progress::Ended);
    EXPECT_EQ(body.take(), "one two");
}

TEST(ReplyBody, AcceptsItsLargestSizeAndNotAByteMore) {
    for (const bool isKept : {true, false}) {
        for (const bool isAnnounced : {true, false}) {
            Source source;
            ReplyBody body(5, isKept);
            EXPECT_TRUE(!isAnnounced || body.expect(5));
            source.write("12345");
            EXPECT_EQ(body.readFrom(source.descriptor()), Progress::Read);
            EXPECT_EQ(body.readFrom(source.descriptor()), Progress::NothingThere);
            source.write("6");
            EXPECT_EQ(body.readFrom(source.descriptor()), Progress::TooLarge);
        }
    }
}

TEST(ReplyBody, KeepsNothingThatIsOnlyCounted) {
    Source source;
    ReplyBody body(100, false);
    source.write("text");
    EXPECT_EQ(body.readFrom(source.descriptor()), Progress::Read);
    EXPECT_EQ(body.take(), "");
}

TEST(ReplyBody, RefusesAnAnnouncementThatIsTooLarge) {
    ReplyBody body(5, true);
    EXPECT_TRUE(body.expect(5));
    EXPECT_FALSE(body.expect(6));
    EXPECT_FALSE(ReplyBody(5, false).expect(6));
    constexpr qsizetype kNobodyHas = qsizetype{1} << 60;
    EXPECT_FALSE(ReplyBody(kNobodyHas, true).expect(kNobodyHas));
}

TEST(ReplyBody, ReadsAMebibyteAtOnceAtMost) {
    QTemporaryFile file;
    ASSERT_TRUE(file.open());
    const QByteArray contents(3 * kMebibyte + 7, 'x');
    ASSERT_EQ(file.write(contents), contents.size());
    ASSERT_TRUE(file.flush());
    for (const bool isAnnounced : {true, false}) {
        ASSERT_TRUE(file.seek(0));
        ASSERT_EQ(::lseek(file.handle(), 0, SEEK_SET), 0);
        ReplyBody body(10 * kMebibyte, true);
        EXPECT_TRUE(!isAnnounced || body.expect(contents.size()));
        int reads = 0;
        off_t before = 0;
        while (body.readFrom(file.handle()) == Progress::Read) {
            const off_t position = ::lseek(file.handle(), 0, SEEK_CUR);
            EXPECT_LE(position - before, kMebibyte);
            before = position;
            ++reads;
        }
        EXPECT_EQ(body.take(), contents);
        EXPECT_GE(reads, 4);
        EXPECT_LE(reads, isAnnounced ? 4 : 16);
    }
}

} // namespace
} // namespace orvanta
