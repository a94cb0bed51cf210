// SPDX-License-Identifier: MIT
#include "app/terminal_screen.h"

#include "app/terminal_text.h"
#include "integration/terminal/main_loop.h"
#include "integration/terminal/pseudo_terminal.h"
#include "unit/app/print_text.h"
#include "unit/app/terminal_emulator.h"

#include <gtest/gtest.h>

namespace orvanta {
namespace {

MenuSnapshot snapshotWith(const char* status) {
    return {.statusText = QString::fromUtf8(status),
            .runtimeUpdateStatusText = QStringLiteral("Runtime: 1.0.0")};
}

QStringList menuLines(const MenuSnapshot& snapshot, int columns) {
    return linesOf(layoutForTerminal(menuEntries(snapshot), columns - 1), false);
}

class Screen : public testing::Test {
protected:
    /// What the viewer sees now.
    QStringList seen() {
        viewer.feed(QString::fromUtf8(terminal.read()));
        return viewer.text();
    }

    void show(const MenuSnapshot& snapshot) { screen.show(menuEntries(snapshot)); }

    PseudoTerminal terminal{60, 24};
    TerminalEmulator viewer{60, 24};
    TerminalScreen screen{terminal.programSide(), true};
};

TEST_F(Screen, DrawsTheMenuAndRedrawsItInPlace) {
    show(snapshotWith("Offline"));
    EXPECT_EQ(seen(), menuLines(snapshotWith("Offline"), 60));

    show(snapshotWith("Online"));
    EXPECT_EQ(seen(), menuLines(snapshotWith("Online"), 60));

    MenuSnapshot longer = snapshotWith("Offline");
    longer.workspaceId = QStringLiteral("w42");
    longer.lastError = QStringLiteral("something broke ").repeated(12);
    show(longer);
    EXPECT_EQ(seen(), menuLines(longer, 60));

    show(snapshotWith("Online"));
    EXPECT_EQ(seen(), menuLines(snapshotWith("Online"), 60));
}

TEST_F(Screen, WritesNothingWhenNothingChanged) {
    show(snapshotWith("Offline"));
    EXPECT_FALSE(terminal.read().isEmpty());
    show(snapshotWith("Offline"));
    screen.handleResize();
    settle();
    EXPECT_EQ(terminal.read(), QByteArray());
}

TEST_F(Screen, PrintedLinesAppearAboveTheMenuInTheirOrder) {
    screen.printLine(QStringLiteral("before the menu"));
    show(snapshotWith("Offline"));
    screen.printLine(QStringLiteral("one"));
    show(snapshotWith("Online"));
    screen.printLine(QStringLiteral("two"));
    EXPECT_EQ(seen(), (QStringList{QStringLiteral("before the menu"), QStringLiteral("one"),
                                   QStringLiteral("two")} +
                       menuLines(snapshotWith("Online"), 60)));
}

TEST_F(Screen, PrintedLinesSurviveInTheHistoryOfAFullScreen) {
    show(snapshotWith("Offline"));
    QStringList printed;
    for (int index = 0; index < 100; ++index) {
        printed.append(QStringLiteral("line %1").arg(index));
        screen.printLine(printed.last());
    }
    const QStringList expected = printed + menuLines(snapshotWith("Offline"), 60);
    EXPECT_TRUE(waitUntil([&] { return seen() == expected; }));
}

TEST_F(Screen, APrintedLineLongerThanTheTerminalKeepsTheMenuWhole) {
    show(snapshotWith("Offline"));
    screen.printLine(QString(150, u'x'));
    EXPECT_EQ(seen(), (QStringList{QString(59, u'x'), QString(59, u'x'), QString(32, u'x')} +
                       menuLines(snapshotWith("Offline"), 60)));
}

TEST_F(Screen, PrintedControlCharactersAreNotObeyed) {
    screen.printLine(QStringLiteral("\x1b[2Jgone"));
    EXPECT_FALSE(terminal.read().contains("\x1b[2J"));
}

TEST_F(Screen, ANarrowerTerminalGetsShorterLines) {
    MenuSnapshot snapshot = snapshotWith("Offline");
    snapshot.workspaceId = QString(50, u'w');
    snapshot.lastError = QStringLiteral("something broke ").repeated(3);
    show(snapshot);
    EXPECT_EQ(seen(), menuLines(snapshot, 60));

    terminal.resize(40, 24);
    screen.handleResize();
    const QStringList narrow = seen();
    EXPECT_EQ(narrow, menuLines(snapshot, 40));
    for (const QString& line : narrow) {
        EXPECT_LT(displayWidth(line), 40);
    }
}

TEST_F(Screen, WhereTheMenuDoesNotFitChangesAreAppended) {
    terminal.resize(60, 10);
    screen.handleResize();
    show(snapshotWith("Offline"));
    show(snapshotWith("Online"));
    screen.printLine(QStringLiteral("printed"));
    EXPECT_EQ(seen(), (menuLines(snapshotWith("Offline"), 60) +
                       QStringList{QStringLiteral("Status: Online"), QStringLiteral("printed")}));
}

TEST_F(Screen, AfterAPauseTheWholeMenuIsDrawnWhereTheCursorIs) {
    show(snapshotWith("Offline"));
    QStringList expected = seen();
    viewer.feed(QStringLiteral("$ fg\r\n"));
    screen.handleContinue();
    EXPECT_EQ(seen(), expected + QStringList{QStringLiteral("$ fg")} +
                          menuLines(snapshotWith("Offline"), 60));
}

TEST_F(Screen, WhatIsBeingTypedStaysDuringARedraw) {
    show(snapshotWith("Offline"));
    terminal.type("Qui");
    MenuSnapshot longer = snapshotWith("Offline");
    longer.lastError = QStringLiteral("Oh.");
    show(longer);
    EXPECT_EQ(seen(), menuLines(longer, 60) + QStringList{QStringLiteral("Qui")});
}

TEST(ScreenOnADumbTerminal, AppendsPlainLines) {
    PseudoTerminal terminal(60, 24);
    TerminalScreen screen(terminal.programSide(), false);
    screen.show(menuEntries(snapshotWith("Offline")));
    screen.show(menuEntries(snapshotWith("Online")));
    const QByteArray output = terminal.read();
    EXPECT_FALSE(output.contains('\x1b'));
    EXPECT_TRUE(output.contains(" 7  Sign Out (unavailable)\r\n"));
    EXPECT_TRUE(output.endsWith("16  Quit\r\nStatus: Online\r\n"));
}

TEST(ScreenOnAPipe, AppendsTheMenuOnceAndThenChanges) {
    TestPipe pipe;
    TerminalScreen screen(pipe.writeEnd.get(), true);
    screen.show(menuEntries(snapshotWith("Offline")));
    EXPECT_EQ(QString::fromUtf8(pipe.read()),
              linesOf(layoutForLog(menuEntries(snapshotWith("Offline"))), false).join(u'\n') +
                  u'\n');
    screen.show(menuEntries(snapshotWith("Offline")));
    screen.handleContinue();
    EXPECT_EQ(pipe.read(), QByteArray());
    screen.show(menuEntries(snapshotWith("Online")));
    screen.printLine(QStringLiteral("printed"));
    EXPECT_EQ(pipe.read(), QByteArray("Status: Online\nprinted\n"));
}

} // namespace
} // namespace orvanta
