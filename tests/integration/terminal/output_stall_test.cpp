// SPDX-License-Identifier: MIT
#include "app/terminal_screen.h"
#include "integration/terminal/main_loop.h"
#include "integration/terminal/pseudo_terminal.h"

#include <QElapsedTimer>
#include <QTemporaryFile>

#include <array>
#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>

namespace orvanta {
namespace {

constexpr int kLines = 20'000;

/// A write that blocks never returns here: nobody reads meanwhile.
void printMany(TerminalScreen& screen) {
    QElapsedTimer clock;
    clock.start();
    for (int index = 0; index < kLines; ++index) {
        screen.printLine(QStringLiteral("line number %1").arg(index));
    }
    EXPECT_LT(clock.elapsed(), 5000);
}

QByteArrayList linesOfOutput(const QByteArray& output) {
    QByteArrayList lines = output.split('\n');
    EXPECT_EQ(lines.takeLast(), QByteArray()); // the output ends with a line end
    return lines;
}

int droppedCount(const QByteArray& notice) {
    EXPECT_TRUE(notice.endsWith(" lines were dropped because nobody read them)"))
        << notice.toStdString();
    return notice.mid(1, notice.indexOf(' ') - 1).toInt();
}

TEST(StalledPipe, NeitherBlocksNorGrowsAndSaysWhatIsMissing) {
    TestPipe pipe;
    TerminalScreen screen(pipe.writeEnd.get(), true);
    printMany(screen);

    QByteArray output;
    ASSERT_TRUE(waitUntil([&] {
        output += pipe.read();
        return output.contains("dropped");
    }));
    const QByteArrayList lines = linesOfOutput(output);
    const int kept = static_cast<int>(lines.size()) - 1;
    EXPECT_LT(output.size(), 200 * 1024);
    for (int index = 0; index < kept; ++index) {
        EXPECT_EQ(lines[index], "line number " + QByteArray::number(index));
    }
    EXPECT_EQ(kept + droppedCount(lines.last()), kLines);

    screen.printLine(QStringLiteral("again"));
    EXPECT_EQ(pipe.read(), QByteArray("again\n"));
}

TEST(StalledPipe, LaterShowsOnlyTheLatestMenu) {
    TestPipe pipe;
    TerminalScreen screen(pipe.writeEnd.get(), true);
    screen.show(menuEntries({.statusText = QStringLiteral("Offline")}));
    printMany(screen);
    for (int index = 0; index < 1000; ++index) {
        screen.show(menuEntries({.statusText = QString::number(index)}));
    }
    QByteArray output;
    ASSERT_TRUE(waitUntil([&] {
        output += pipe.read();
        return output.contains("Status: 999\n");
    }));
    EXPECT_EQ(output.count("Status: "), 2);
}

/// What a service's output goes to on many systems.
TEST(StalledSocket, DoesNotBlock) {
    std::array<int, 2> ends = {};
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()), 0);
    TestPipe pipe;
    pipe.readEnd = FileDescriptor(ends[0]);
    pipe.writeEnd = FileDescriptor(ends[1]);
    TerminalScreen screen(pipe.writeEnd.get(), true);
    for (int round = 0; round < 20; ++round) {
        printMany(screen);
    }
    QByteArray output;
    EXPECT_TRUE(waitUntil([&] {
        output += pipe.read();
        return output.contains("dropped");
    }));
    EXPECT_TRUE(output.startsWith("line number 0\nline number 1\n"));
}

TEST(StalledTerminal, DoesNotBlock) {
    PseudoTerminal terminal(60, 24);
    TerminalScreen screen(terminal.programSide(), true);
    screen.show(menuEntries({.statusText = QStringLiteral("Offline")}));
    printMany(screen);
    QByteArray output;
    EXPECT_TRUE(waitUntil([&] {
        output += terminal.read();
        return output.contains("dropped");
    }));
}

TEST(SharedDescriptor, StaysBlockingForTheOthers) {
    TestPipe pipe;
    PseudoTerminal terminal(60, 24);
    for (const int descriptor : {pipe.writeEnd.get(), terminal.programSide()}) {
        TerminalScreen screen(descriptor, true);
        printMany(screen);
        EXPECT_EQ(::fcntl(descriptor, F_GETFL) & O_NONBLOCK, 0);
    }
}

TEST(GoneReader, EndsTheOutputOnly) {
    std::signal(SIGPIPE, SIG_IGN);
    TestPipe pipe;
    TerminalScreen screen(pipe.writeEnd.get(), true);
    screen.printLine(QStringLiteral("read"));
    pipe.readEnd.reset();
    printMany(screen);

    PseudoTerminal terminal(60, 24);
    TerminalScreen onTerminal(terminal.programSide(), true);
    terminal.hangUp();
    printMany(onTerminal);
    settle();
}

TEST(GoneReader, WhileOutputWaits) {
    std::signal(SIGPIPE, SIG_IGN);
    TestPipe pipe;
    TerminalScreen screen(pipe.writeEnd.get(), true);
    printMany(screen);
    pipe.readEnd.reset();
    settle();
    printMany(screen);
}

TEST(ClosedOutput, IsNoError) {
    TerminalScreen screen(-1, true);
    screen.show(menuEntries({}));
    printMany(screen);
}

TEST(OutputToAFile, ContinuesWhereTheFileStands) {
    QTemporaryFile file;
    ASSERT_TRUE(file.open());
    ASSERT_EQ(file.write("earlier\n"), 8);
    ASSERT_TRUE(file.flush());
    TerminalScreen screen(file.handle(), true);
    screen.printLine(QStringLiteral("later"));
    QFile written(file.fileName());
    ASSERT_TRUE(written.open(QIODevice::ReadOnly));
    EXPECT_EQ(written.readAll(), QByteArray("earlier\nlater\n"));
}

} // namespace
} // namespace orvanta
