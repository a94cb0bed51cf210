// SPDX-License-Identifier: MIT
#include "app/terminal_layout.h"

#include "app/terminal_text.h"
#include "unit/app/print_text.h"

#include <gtest/gtest.h>

namespace orvanta {
namespace {

MenuSnapshot richSnapshot() {
    return {.menuState = ConnectorMenuState::online,
            .statusText = QStringLiteral("Online"),
            .workspaceId = QStringLiteral("w42"),
            .lastError = QStringLiteral("It broke."),
            .launchAtLoginEnabled = true,
            .runtimeUpdateStatusText = QStringLiteral("Runtime: 1.2.3")};
}

QStringList terminalLines(const MenuSnapshot& snapshot, int width) {
    return linesOf(layoutForTerminal(menuEntries(snapshot), width), false);
}

QStringList lines(const char* text) {
    return QString::fromUtf8(text).split(u'\n');
}

TEST(TerminalLayout, ShowsTheVisibleEntriesWithTheirNumbers) {
    EXPECT_EQ(terminalLines(richSnapshot(), 60), lines("Status: Online\n"
                                                       "w42\n"
                                                       "It broke.\n"
                                                       "----------------------------------------\n"
                                                       " 5  Open Dashboard\n"
                                                       " 6  Sign In / Pair\n"
                                                       " 7  Sign Out\n"
                                                       " 8  Restart\n"
                                                       "----------------------------------------\n"
                                                       "Runtime: 1.2.3\n"
                                                       "11  Check for Runtime Updates\n"
                                                       "12  Update Desktop Connector\n"
                                                       "13  Rollback Runtime\n"
                                                       "14  [x] Launch at Login\n"
                                                       "----------------------------------------\n"
                                                       "16  Quit"));
}

TEST(TerminalLayout, ALogGetsWholeLinesAndWords) {
    MenuSnapshot snapshot = richSnapshot();
    snapshot.launchAtLoginEnabled = false;
    snapshot.workspaceId.reset();
    snapshot.lastError = QString(300, u'e');
    EXPECT_EQ(linesOf(layoutForLog(menuEntries(snapshot)), false),
              lines("Status: Online\n").mid(0, 1) + QStringList{QString(300, u'e')} +
                  lines("----------------------------------------\n"
                        " 5  Open Dashboard\n"
                        " 6  Sign In / Pair (unavailable)\n"
                        " 7  Sign Out\n"
                        " 8  Restart\n"
                        "----------------------------------------\n"
                        "Runtime: 1.2.3\n"
                        "11  Check for Runtime Updates\n"
                        "12  Update Desktop Connector (unavailable)\n"
                        "13  Rollback Runtime (unavailable)\n"
                        "14  [ ] Launch at Login\n"
                        "----------------------------------------\n"
                        "16  Quit"));
}

TEST(TerminalLayout, DisabledEntriesAndFootnotesAreDimOnATerminal) {
    const auto layout = layoutForTerminal(menuEntries(richSnapshot()), 60);
    const QStringList styled = linesOf(layout, true);
    EXPECT_EQ(styled[0], QStringLiteral("\x1b[1mStatus: Online\x1b[0m"));
    EXPECT_EQ(styled[1], QStringLiteral("\x1b[2mw42\x1b[0m"));
    EXPECT_EQ(styled[5], QStringLiteral("\x1b[2m 6  Sign In / Pair\x1b[0m"));
    EXPECT_EQ(styled[6], QStringLiteral(" 7  Sign Out"));
}

TEST(TerminalLayout, NoLineIsLongerThanTheWidth) {
    MenuSnapshot snapshot = richSnapshot();
    snapshot.workspaceId = QStringLiteral("workspace").repeated(30);
    snapshot.lastError = QStringLiteral(u"a世界 ").repeated(100);
    snapshot.runtimeUpdateStatusText = QStringLiteral("runtime ").repeated(30);
    for (const int width : {20, 21, 40, 79, 200}) {
        for (const QString& line : terminalLines(snapshot, width)) {
            EXPECT_LE(displayWidth(line), width) << line.toStdString();
        }
    }
}

TEST(TerminalLayout, WorkspaceTakesOneLineRuntimeTwoAndTheErrorAllItNeeds) {
    MenuSnapshot snapshot = richSnapshot();
    snapshot.workspaceId = QString(100, u'w');
    snapshot.lastError = QString(100, u'e');
    snapshot.runtimeUpdateStatusText = QString(100, u'r');
    const auto layout = layoutForTerminal(menuEntries(snapshot), 30);
    EXPECT_EQ(layout[1].lines, QStringList{QString(29, u'w') + QChar(0x2026)});
    EXPECT_EQ(layout[2].lines.join(QString()), *snapshot.lastError);
    EXPECT_EQ(layout[9].lines, (QStringList{QString(30, u'r'), QString(29, u'r') + QChar(0x2026)}));
}

TEST(TerminalLayout, LongChoicesContinueBesideTheirNumber) {
    const auto layout = layoutForTerminal(menuEntries(richSnapshot()), 20);
    EXPECT_EQ(layout[10].lines, (QStringList{QStringLiteral("11  Check for"),
                                             QStringLiteral("    Runtime Updates")}));
}

TEST(TerminalLayout, ControlCharactersDoNotReachTheTerminal) {
    MenuSnapshot snapshot = richSnapshot();
    snapshot.lastError = QStringLiteral("\x1b[2Jgone");
    const QString whole = terminalLines(snapshot, 60).join(u'\n');
    EXPECT_FALSE(whole.contains(QChar(0x1B)));
    EXPECT_TRUE(whole.contains(QStringLiteral("[2Jgone")));
    EXPECT_FALSE(
        linesOf(layoutForLog(menuEntries(snapshot)), false).join(u'\n').contains(QChar(0x1B)));
}

TEST(ChangedEntries, AreThoseThatDifferOrAppear) {
    const auto before = layoutForLog(menuEntries(richSnapshot()));
    MenuSnapshot snapshot = richSnapshot();
    snapshot.statusText = QStringLiteral("Offline");
    snapshot.workspaceId.reset();
    const auto now = layoutForLog(menuEntries(snapshot));
    EXPECT_EQ(linesOf(changedEntries(before, now), false),
              QStringList{QStringLiteral("Status: Offline")});
    EXPECT_EQ(linesOf(changedEntries(now, before), false),
              (QStringList{QStringLiteral("Status: Online"), QStringLiteral("w42")}));
    EXPECT_TRUE(changedEntries(before, before).empty());
    EXPECT_EQ(changedEntries({}, before), before);
}

} // namespace
} // namespace orvanta
