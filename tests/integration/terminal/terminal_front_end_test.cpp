// SPDX-License-Identifier: MIT
#include "app/terminal_front_end.h"

#include "app/orvanta_menu_bar_view.h"
#include "app/terminal_layout.h"
#include "app/terminal_screen.h"
#include "app/terminal_text.h"
#include "fakes/fake_desktop.h"
#include "integration/terminal/main_loop.h"
#include "integration/terminal/pseudo_terminal.h"
#include "platform/qt/main_queue.h"
#include "unit/app/print_text.h"
#include "unit/app/recording_menu_source.h"
#include "unit/app/terminal_emulator.h"

#include <gmock/gmock.h>

namespace orvanta {
namespace {

using testing::ElementsAre;

class FrontEnd : public testing::Test {
protected:
    FrontEnd() { manager.snapshot.statusText = QStringLiteral("Offline"); }

    void start() {
        m_frontEnd.emplace(m_view, m_screen, m_queue, terminal.programSide(),
                           terminal.programSide());
    }
    QStringList seen() {
        m_viewer.feed(QString::fromUtf8(terminal.read()));
        return m_viewer.text();
    }
    bool waitToSee(const QStringList& expected) {
        return waitUntil([&] { return seen() == expected; });
    }
    static QStringList wrapped(const QString& line) { return splitAtWidth(line, 99); }
    QStringList menu() const {
        return linesOf(layoutForTerminal(menuEntries(manager.snapshot), 99), false);
    }

    RecordingMenuSource manager;
    fakes::FakeApplicationHost application;
    PseudoTerminal terminal{100, 30};

private:
    QtMainQueue m_queue;
    TerminalEmulator m_viewer{100, 30};
    TerminalScreen m_screen{terminal.programSide(), true};
    OrvantaMenuBarView m_view{manager.source(), m_queue, application};
    std::optional<TerminalFrontEnd> m_frontEnd;
};

TEST_F(FrontEnd, FollowsTheManager) {
    start();
    EXPECT_TRUE(waitToSee(menu()));
    manager.setStatusText(QStringLiteral("Starting..."));
    manager.setStatusText(QStringLiteral("Online"));
    EXPECT_TRUE(waitToSee(menu()));
    settle();
    manager.setStatusText(QStringLiteral("Online"));
    settle();
    EXPECT_EQ(terminal.read(), QByteArray());
}

TEST_F(FrontEnd, RunsWhatIsTypedAndTakesTheTypedLineAway) {
    start();
    terminal.type("8\nopen dashboard\n");
    ASSERT_TRUE(waitUntil([this] { return manager.calls.size() == 2; }));
    EXPECT_THAT(manager.calls, testing::UnorderedElementsAre("openDashboard", "restartServer"));
    EXPECT_TRUE(waitToSee(menu()));
}

TEST_F(FrontEnd, SaysWhatCanBeTypedAboveTheMenu) {
    start();
    terminal.type("dance\n");
    const QStringList expected = wrapped(commandHelp(menuEntries(manager.snapshot))) + menu();
    EXPECT_TRUE(waitToSee(expected));
    EXPECT_TRUE(manager.calls.empty());
}

TEST_F(FrontEnd, GoesOnAfterTheEndOfTheInput) {
    start();
    terminal.type("\x04");
    settle();
    manager.setStatusText(QStringLiteral("Online"));
    EXPECT_TRUE(waitToSee(menu()));
    EXPECT_EQ(application.terminateCount, 0);
}

TEST_F(FrontEnd, QuitEndsTheApplication) {
    start();
    terminal.type("16\n");
    ASSERT_TRUE(waitUntil([this] { return application.terminateCount == 1; }));
    EXPECT_THAT(manager.calls, ElementsAre("handleApplicationTermination"));
}

} // namespace
} // namespace orvanta
