// SPDX-License-Identifier: MIT
#include "app/command_reader.h"

#include "integration/terminal/main_loop.h"
#include "integration/terminal/pseudo_terminal.h"
#include "platform/qt/main_queue.h"

#include <QTemporaryFile>

#include <fcntl.h>
#include <gmock/gmock.h>

namespace orvanta {
namespace {

using Line = LineSplitter::Line;
using testing::ElementsAre;
using testing::IsEmpty;

class Reader : public testing::Test {
protected:
    void read(int descriptor) {
        m_reader = std::make_unique<CommandReader>(
            descriptor, m_queue, [this](const Line& line) { lines.push_back(line); });
    }
    bool waitForLines(std::size_t count) {
        return waitUntil([&] { return lines.size() >= count; });
    }

    std::vector<Line> lines;

private:
    QtMainQueue m_queue;
    std::unique_ptr<CommandReader> m_reader;
};

TEST_F(Reader, APipeGivesLinesAsTheyComeAndTheUnfinishedOneAtItsEnd) {
    TestPipe pipe;
    read(pipe.readEnd.get());
    pipe.write("one\ntw");
    ASSERT_TRUE(waitForLines(1));
    settle();
    EXPECT_THAT(lines, ElementsAre(Line("one")));
    pipe.write("o\nthree");
    pipe.writeEnd.reset();
    ASSERT_TRUE(waitForLines(3));
    EXPECT_THAT(lines, ElementsAre(Line("one"), Line("two"), Line("three")));
}

TEST_F(Reader, ATerminalGivesWhatIsTyped) {
    PseudoTerminal terminal(60, 24);
    read(terminal.programSide());
    terminal.type("quit\n");
    ASSERT_TRUE(waitForLines(1));
    EXPECT_THAT(lines, ElementsAre(Line("quit")));
}

TEST_F(Reader, AFileIsReadToItsEndInPieces) {
    QTemporaryFile file;
    ASSERT_TRUE(file.open());
    file.write(QByteArray("word\n").repeated(3000) + "last");
    file.seek(0);
    read(file.handle());
    EXPECT_TRUE(lines.empty());
    ASSERT_TRUE(waitForLines(3001));
    settle();
    EXPECT_EQ(lines.size(), 3001u);
    EXPECT_EQ(lines.back(), Line("last"));
}

TEST_F(Reader, NothingComesOfNothing) {
    FileDescriptor nothing(::open("/dev/null", O_RDONLY));
    read(nothing.get());
    settle();
    read(-1);
    settle();
    EXPECT_THAT(lines, IsEmpty());
}

TEST_F(Reader, ALineThatIsTooLongIsReportedOnceAsSuch) {
    TestPipe pipe;
    read(pipe.readEnd.get());
    pipe.write(QByteArray(60'000, 'x') + "\nquit\n");
    ASSERT_TRUE(waitForLines(2));
    EXPECT_THAT(lines, ElementsAre(Line(), Line("quit")));
}

TEST_F(Reader, LeavesTheSharedDescriptorBlocking) {
    TestPipe pipe;
    PseudoTerminal terminal(60, 24);
    for (const int descriptor : {pipe.readEnd.get(), terminal.programSide()}) {
        read(descriptor);
        settle();
        EXPECT_EQ(::fcntl(descriptor, F_GETFL) & O_NONBLOCK, 0);
    }
}

TEST_F(Reader, AHangUpEndsTheReading) {
    PseudoTerminal terminal(60, 24);
    read(terminal.programSide());
    terminal.hangUp();
    settle();
    EXPECT_THAT(lines, IsEmpty());
}

} // namespace
} // namespace orvanta
