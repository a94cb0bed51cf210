// SPDX-License-Identifier: MIT
#include "app/terminal_painting.h"

#include "unit/app/print_text.h"
#include "unit/app/terminal_emulator.h"

#include <gtest/gtest.h>

namespace orvanta {
namespace {

QStringList words(const char* text) {
    return QString::fromUtf8(text).split(u' ', Qt::SkipEmptyParts);
}

struct PatchCase {
    const char* before;
    const char* above;
    const char* after;
};

/// On a screen with room, on one that is exactly full, and on one that has to scroll.
class Patch : public testing::TestWithParam<std::tuple<PatchCase, int>> {};

TEST_P(Patch, ReplacesTheBlockAndKeepsWhatIsTyped) {
    const auto& [change, earlierLines] = GetParam();
    TerminalEmulator terminal(20, 8);
    QStringList earlier;
    for (int line = 0; line < earlierLines; ++line) {
        earlier.append(QStringLiteral("earlier%1").arg(line));
    }
    terminal.feed(repaint(0, earlier, words(change.before)));
    terminal.feed(QStringLiteral("typ"));

    terminal.feed(patch(words(change.before), words(change.above), words(change.after)));
    terminal.feed(QStringLiteral("ing"));

    EXPECT_EQ(terminal.text(), earlier + words(change.above) + words(change.after) +
                                   QStringList{QStringLiteral("typing")});
    EXPECT_EQ(terminal.cursorColumn(), 6);
}

INSTANTIATE_TEST_SUITE_P(
    Changes, Patch,
    testing::Combine(testing::Values(PatchCase{"a b c", "", "a B c"},
                                     PatchCase{"a b c", "", "a b c d e"},
                                     PatchCase{"a b c", "", "x a b c"}, PatchCase{"a b c", "", "c"},
                                     PatchCase{"a b c", "", "longer b c"},
                                     PatchCase{"longer b c", "", "a b c"},
                                     PatchCase{"a b c", "printed", "a b c"},
                                     PatchCase{"a b c", "one two", "a c"},
                                     PatchCase{"a b c d e f", "printed", "a b c d e f"}),
                     testing::Values(0, 1, 4, 20)));

TEST(PatchOutput, NothingForNoChange) {
    EXPECT_TRUE(patch(words("a b"), {}, words("a b")).isEmpty());
}

TEST(PatchOutput, WritesOnlyTheLineThatChanged) {
    const QString painting = patch(words("alpha beta gamma"), {}, words("alpha BETA gamma"));
    EXPECT_TRUE(painting.contains(QStringLiteral("BETA")));
    EXPECT_FALSE(painting.contains(QStringLiteral("alpha")));
    EXPECT_FALSE(painting.contains(QStringLiteral("gamma")));
}

TEST(Repaint, TakesTheTypedLineAwayAndLeavesNothingOfALongerBlock) {
    TerminalEmulator terminal(20, 8);
    terminal.feed(QStringLiteral("$ orvanta-tray\r\n") + repaint(0, {}, words("a b c d")));
    terminal.feed(QStringLiteral("nonsense\r\n"));
    terminal.feed(repaint(5, words("printed"), words("a b")));
    EXPECT_EQ(terminal.text(),
              (QStringList{QStringLiteral("$ orvanta-tray"), QStringLiteral("printed"),
                           QStringLiteral("a"), QStringLiteral("b")}));
    EXPECT_EQ(terminal.cursorRow(), 4);
    EXPECT_EQ(terminal.cursorColumn(), 0);
}

} // namespace
} // namespace orvanta
