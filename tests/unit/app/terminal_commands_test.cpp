// SPDX-License-Identifier: MIT
#include "app/terminal_commands.h"

#include "unit/app/print_text.h"

#include <gmock/gmock.h>

namespace orvanta {
namespace {

using Id = MenuEntryId;
using Line = LineSplitter::Line;
using testing::ElementsAre;
using testing::IsEmpty;

struct CommandCase {
    QByteArray typed;
    std::optional<Id> expected;
};

class CommandFor : public testing::TestWithParam<CommandCase> {};

/// Offline: Sign Out (7), Update (12) and Rollback (13) cannot be chosen.
TEST_P(CommandFor, FindsTheEnabledEntry) {
    EXPECT_EQ(commandFor(menuEntries(MenuSnapshot{}), GetParam().typed), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Typed, CommandFor,
    testing::Values(CommandCase{"5", Id::openDashboard}, CommandCase{"6", Id::signIn},
                    CommandCase{"8", Id::restart}, CommandCase{"11", Id::checkForUpdates},
                    CommandCase{"14", Id::launchAtLogin}, CommandCase{"16", Id::quit},
                    CommandCase{"  16 \r", Id::quit}, CommandCase{"quit", Id::quit},
                    CommandCase{"\tSIGN IN / PAIR ", Id::signIn},
                    CommandCase{"launch at login", Id::launchAtLogin},
                    CommandCase{"7", std::nullopt}, CommandCase{"Sign Out", std::nullopt},
                    CommandCase{"12", std::nullopt}, CommandCase{"1", std::nullopt},
                    CommandCase{"4", std::nullopt}, CommandCase{"10", std::nullopt},
                    CommandCase{"17", std::nullopt}, CommandCase{"0", std::nullopt},
                    CommandCase{"", std::nullopt}, CommandCase{"Status: ", std::nullopt},
                    CommandCase{"16 quit", std::nullopt}, CommandCase{"qui", std::nullopt},
                    CommandCase{"\xff\xfe", std::nullopt}, CommandCase{"Quit\xff", std::nullopt}));

TEST(CommandHelp, NamesWhatCanBeTypedNow) {
    EXPECT_EQ(commandHelp(menuEntries(MenuSnapshot{})),
              QStringLiteral("Type the number or the name of one of these: 5 Open Dashboard, "
                             "6 Sign In / Pair, 8 Restart, 11 Check for Runtime Updates, "
                             "14 Launch at Login, 16 Quit."));
}

TEST(LineSplitter, CompletesLinesAcrossPieces) {
    LineSplitter splitter;
    EXPECT_THAT(splitter.feed("on"), IsEmpty());
    EXPECT_THAT(splitter.feed("e\n\ntwo\nth"), ElementsAre(Line("one"), Line(""), Line("two")));
    EXPECT_THAT(splitter.feed("ree"), IsEmpty());
    EXPECT_THAT(splitter.finish(), ElementsAre(Line("three")));
    EXPECT_THAT(splitter.finish(), IsEmpty());
}

TEST(LineSplitter, TheLongestLineIsKept) {
    LineSplitter splitter;
    const QByteArray longest(LineSplitter::kLongestLine, 'x');
    EXPECT_THAT(splitter.feed(longest + '\n'), ElementsAre(Line(longest)));
}

TEST(LineSplitter, ALongerOneIsDroppedOnceAndTheNextKept) {
    LineSplitter splitter;
    const QByteArray tooLong(LineSplitter::kLongestLine + 1, 'x');
    EXPECT_THAT(splitter.feed(tooLong + "\nquit\n"), ElementsAre(Line(), Line("quit")));
    for (int piece = 0; piece < 10; ++piece) {
        EXPECT_THAT(splitter.feed(tooLong), IsEmpty());
    }
    EXPECT_THAT(splitter.feed("quit\nquit\n"), ElementsAre(Line(), Line("quit")));
    splitter.feed(tooLong);
    EXPECT_THAT(splitter.finish(), ElementsAre(Line()));
}

} // namespace
} // namespace orvanta
