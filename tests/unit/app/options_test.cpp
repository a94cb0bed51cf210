// SPDX-License-Identifier: MIT
#include "app/options.h"

#include "unit/app/print_text.h"

#include <gtest/gtest.h>

namespace orvanta {
namespace {

using Action = Options::Action;

struct OptionsCase {
    std::vector<std::string_view> arguments;
    Options expected;
};

class ParseOptions : public testing::TestWithParam<OptionsCase> {};

TEST_P(ParseOptions, ReadsTheCommandLine) {
    EXPECT_EQ(parseOptions(GetParam().arguments), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    CommandLines, ParseOptions,
    testing::Values(OptionsCase{{}, {Action::run, false}},
                    OptionsCase{{"--terminal"}, {Action::run, true}},
                    OptionsCase{{"--terminal", "--terminal"}, {Action::run, true}},
                    OptionsCase{{"--version"}, {Action::showVersion, false}},
                    OptionsCase{{"--help"}, {Action::showHelp, false}},
                    OptionsCase{{"--version", "--help"}, {Action::showHelp, false}},
                    OptionsCase{{"--terminal", "--version"}, {Action::showVersion, true}},
                    OptionsCase{{"--Terminal"}, {Action::refuse, false, "--Terminal"}},
                    OptionsCase{{"-h"}, {Action::refuse, false, "-h"}},
                    OptionsCase{{""}, {Action::refuse, false, ""}},
                    OptionsCase{{"--help", "now", "then"}, {Action::refuse, false, "now"}},
                    OptionsCase{{"--terminal=yes"}, {Action::refuse, false, "--terminal=yes"}}));

TEST(Options, TextsEndTheirLines) {
    EXPECT_EQ(versionText(), QStringLiteral("orvanta-tray 0.1.0\n"));
    EXPECT_TRUE(usageText().endsWith(u'\n'));
    for (const char* option : {"--terminal", "--version", "--help"}) {
        EXPECT_TRUE(usageText().contains(QLatin1String(option))) << option;
    }
}

TEST(Options, ARefusalNamesWhatIsUnknownAndThenWhatIsKnown) {
    EXPECT_EQ(refusalText("--dance"),
              QStringLiteral("orvanta-tray: \"--dance\" is no option.\n\n") + usageText());
}

} // namespace
} // namespace orvanta
