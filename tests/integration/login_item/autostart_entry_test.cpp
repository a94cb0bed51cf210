// SPDX-License-Identifier: MIT
#include "platform/linux/autostart_entry.h"

#include <gtest/gtest.h>

namespace orvanta {
namespace {

const QByteArray kNastyPath = "/o p\"t`$\\%f/;#='&|<>~*?(caf\xc3\xa9)\n\t\rtray";

TEST(AutostartEntry, StartsTheProgram) {
    EXPECT_EQ(autostartEntry("/opt/orvanta/bin/orvanta-tray"),
              QByteArray("[Desktop Entry]\n"
                         "Type=Application\n"
                         "Name=Orvanta\n"
                         "Comment=Keeps the Desktop Connector running\n"
                         "Icon=orvanta-tray\n"
                         "Exec=\"/opt/orvanta/bin/orvanta-tray\"\n"
                         "TryExec=/opt/orvanta/bin/orvanta-tray\n"
                         "Terminal=false\n"
                         "X-GNOME-Autostart-enabled=true\n"));
}

TEST(AutostartEntry, SwitchedOffItSaysSoAndIsStillComplete) {
    EXPECT_EQ(switchedOffAutostartEntry("/bin/tray"),
              autostartEntry("/bin/tray") + "Hidden=true\n");
}

TEST(AutostartEntry, QuotesWhatDesktopsWouldInterpret) {
    const QByteArray entry = autostartEntry(kNastyPath);
    EXPECT_TRUE(entry.contains("\nExec=\"/o p\\\\\"t\\\\`\\\\$\\\\\\\\%%f/"
                               ";#='&|<>~*?(caf\xc3\xa9)\\n\\t\\rtray\"\n"))
        << entry.toStdString();
    EXPECT_TRUE(entry.contains("\nTryExec=/o p\"t`$\\\\%f/"
                               ";#='&|<>~*?(caf\xc3\xa9)\\n\\t\\rtray\n"))
        << entry.toStdString();
}

TEST(AutostartEntry, LetsEnvStartAProgramWithAPercentSign) {
    EXPECT_TRUE(autostartEntry("/100 %/tray")
                    .contains("\nExec=env \"/100 %%/tray\"\nTryExec=/100 %/tray\n"));
    EXPECT_TRUE(autostartEntry("/a=100%/tray").contains("\nExec=\"/a=100%%/tray\"\n"));
}

TEST(AutostartEntry, ReadsBackWhatItWrites) {
    AutostartEntryFacts expected;
    expected.command = {kNastyPath};
    expected.tryExec = kNastyPath;
    EXPECT_EQ(readAutostartEntry(autostartEntry(kNastyPath)), expected);
    expected.isSwitchedOff = true;
    EXPECT_EQ(readAutostartEntry(switchedOffAutostartEntry(kNastyPath)), expected);
}

struct EntryCase {
    const char* text;
    bool isSwitchedOff;
};

class ReadAutostartEntry : public testing::TestWithParam<EntryCase> {};

TEST_P(ReadAutostartEntry, KnowsWhetherItIsSwitchedOff) {
    EXPECT_EQ(readAutostartEntry(GetParam().text).isSwitchedOff, GetParam().isSwitchedOff)
        << GetParam().text;
}

#define ORVANTA_ENTRY "[Desktop Entry]\nType=Application\nExec=x\n"

INSTANTIATE_TEST_SUITE_P(
    Texts, ReadAutostartEntry,
    testing::Values(EntryCase{ORVANTA_ENTRY, false}, EntryCase{ORVANTA_ENTRY "Hidden=true\n", true},
                    EntryCase{ORVANTA_ENTRY "Hidden=1\n", true},
                    EntryCase{ORVANTA_ENTRY " Hidden = true \r\n", true},
                    EntryCase{ORVANTA_ENTRY "Hidden=false\n", false},
                    EntryCase{ORVANTA_ENTRY "Hidden=true\nHidden=false\n", false},
                    EntryCase{ORVANTA_ENTRY "#Hidden=true\n", false},
                    EntryCase{ORVANTA_ENTRY "X-GNOME-Autostart-enabled=false", true},
                    EntryCase{ORVANTA_ENTRY "X-GNOME-Autostart-enabled=true", false},
                    EntryCase{ORVANTA_ENTRY "X-MATE-Autostart-enabled=false", true},
                    EntryCase{ORVANTA_ENTRY "X-GNOME-Autostart-Delay=0", false},
                    EntryCase{ORVANTA_ENTRY "[Desktop Action Off]\nHidden=true\n", false},
                    EntryCase{"", true}, EntryCase{"[Desktop Entry]\nType=Application\n", true},
                    EntryCase{"[Desktop Entry]\nExec=x\n", true},
                    EntryCase{"[Desktop Entry]\nType=Link\nExec=x\n", true},
                    EntryCase{"[Other]\nType=Application\nExec=x\n", true}));

#undef ORVANTA_ENTRY

struct CommandCase {
    const char* exec;
    QByteArrayList command;
};

class ReadCommand : public testing::TestWithParam<CommandCase> {};

TEST_P(ReadCommand, TakesItApart) {
    const QByteArray entry = QByteArray("[Desktop Entry]\nExec=") + GetParam().exec;
    EXPECT_EQ(readAutostartEntry(entry).command, GetParam().command) << GetParam().exec;
}

INSTANTIATE_TEST_SUITE_P(
    Commands, ReadCommand,
    testing::Values(CommandCase{"tray", {"tray"}},
                    CommandCase{"env  A=b tray", {"env", "A=b", "tray"}},
                    CommandCase{"tray %U --icon=%i 100%%", {"tray", "--icon=", "100%"}},
                    CommandCase{R"("/a b/tray" "" "c")", {"/a b/tray", "", "c"}},
                    CommandCase{R"("a\\"b\\\\c\\$d")", {R"(a"b\c$d)"}},
                    CommandCase{R"(/a\\ b/tray)", {"/a b/tray"}},
                    CommandCase{R"(a\sb)", {"a", "b"}}, CommandCase{R"("a\nb")", {"a\nb"}},
                    CommandCase{"\"open a", {"open a"}}, CommandCase{"tray %", {"tray", "%"}}));

struct DesktopCase {
    const char* keys;
    QByteArrayList desktops;
    bool isMeant;
};

class MeantForDesktop : public testing::TestWithParam<DesktopCase> {};

TEST_P(MeantForDesktop, FollowsTheLists) {
    const QByteArray entry = QByteArray("[Desktop Entry]\n") + GetParam().keys;
    EXPECT_EQ(isMeantFor(readAutostartEntry(entry), GetParam().desktops), GetParam().isMeant)
        << GetParam().keys << " in " << GetParam().desktops.join(':').toStdString();
}

INSTANTIATE_TEST_SUITE_P(
    Lists, MeantForDesktop,
    testing::Values(
        DesktopCase{"", {"KDE"}, true}, DesktopCase{"", {}, true},
        DesktopCase{"OnlyShowIn=GNOME;KDE;", {"KDE"}, true},
        DesktopCase{"OnlyShowIn=GNOME;KDE", {"KDE"}, true},
        DesktopCase{"OnlyShowIn=GNOME;", {"KDE"}, false},
        DesktopCase{"OnlyShowIn=GNOME;", {""}, false}, DesktopCase{"OnlyShowIn=", {"KDE"}, false},
        DesktopCase{"NotShowIn=KDE;", {"KDE"}, false},
        DesktopCase{"NotShowIn=KDE;", {"XFCE"}, true}, DesktopCase{"NotShowIn=KDE;", {""}, true},
        DesktopCase{"OnlyShowIn=Ubuntu;\nNotShowIn=GNOME;", {"Ubuntu", "GNOME"}, true},
        DesktopCase{"OnlyShowIn=GNOME;\nNotShowIn=Ubuntu;", {"Ubuntu", "GNOME"}, false},
        DesktopCase{"OnlyShowIn=GNOME;\nX-XFCE-Autostart-Override=true", {"XFCE"}, true},
        DesktopCase{"OnlyShowIn=GNOME;\nX-XFCE-Autostart-Override=true", {"KDE"}, false}));

} // namespace
} // namespace orvanta
