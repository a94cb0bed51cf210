// SPDX-License-Identifier: MIT
#include "platform/linux/autostart_entry.h"

#include <gtest/gtest.h>

namespace orvanta {
namespace {

TEST(AutostartEntry, StartsTheProgram) {
    EXPECT_EQ(autostartEntry("/opt/orvanta/bin/orvanta-tray"),
              QByteArray("[Desktop Entry]\n"
                         "Type=Application\n"
                         "Name=Orvanta\n"
                         "Exec=\"/opt/orvanta/bin/orvanta-tray\"\n"
                         "TryExec=/opt/orvanta/bin/orvanta-tray\n"
                         "Terminal=false\n"
                         "X-GNOME-Autostart-enabled=true\n"));
}

TEST(AutostartEntry, QuotesWhatDesktopsWouldInterpret) {
    const QByteArray entry = autostartEntry("/o p\"t`$\\%f/\ntray");
    EXPECT_TRUE(entry.contains(R"(Exec="/o p\\"t\\`\\$\\\\%%f/\ntray")"
                               "\n"))
        << entry.toStdString();
    EXPECT_TRUE(entry.contains(R"(TryExec=/o p"t`$\\%f/\ntray)"
                               "\n"))
        << entry.toStdString();
}

TEST(AutostartEntry, ReadsBackWhatItWrites) {
    const QByteArray program = "/o p\"t`$\\%f/\ntray";
    EXPECT_EQ(readAutostartEntry(autostartEntry(program)),
              (AutostartEntryFacts{.isSwitchedOff = false, .tryExec = program}));
}

struct EntryCase {
    const char* text;
    bool isSwitchedOff;
};

class ReadAutostartEntry : public testing::TestWithParam<EntryCase> {};

TEST_P(ReadAutostartEntry, KnowsWhetherItIsSwitchedOff) {
    EXPECT_EQ(readAutostartEntry(GetParam().text).isSwitchedOff, GetParam().isSwitchedOff);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, ReadAutostartEntry,
    testing::Values(EntryCase{"", false}, EntryCase{"[Desktop Entry]\nExec=x\n", false},
                    EntryCase{"[Desktop Entry]\nHidden=true\n", true},
                    EntryCase{"[Desktop Entry]\n Hidden = true \r\n", true},
                    EntryCase{"[Desktop Entry]\nHidden=false\n", false},
                    EntryCase{"[Desktop Entry]\n#Hidden=true\n", false},
                    EntryCase{"[Desktop Entry]\nX-GNOME-Autostart-enabled=false", true},
                    EntryCase{"[Desktop Entry]\nX-GNOME-Autostart-enabled=true", false},
                    EntryCase{"[Desktop Action Off]\nHidden=true\n", false},
                    EntryCase{"[Desktop Entry]\nExec=x\n[Other]\nHidden=true\n", false}));

} // namespace
} // namespace orvanta
