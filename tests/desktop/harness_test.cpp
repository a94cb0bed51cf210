// SPDX-License-Identifier: MIT
#include "desktop/bus_monitor.h"
#include "desktop/desktop_session.h"
#include "desktop/marked_processes.h"
#include "desktop/menu_rows.h"
#include "desktop/panel.h"
#include "desktop/person.h"
#include "desktop/screen.h"
#include "desktop/tray_menu.h"
#include "desktop/waiting.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace orvanta::tests {

class Harness : public ::testing::Test {
protected:
    void SetUp() override {
        const QStringList missing = DesktopSession::missingPrograms();
        ASSERT_TRUE(missing.isEmpty()) << missing.join(QLatin1Char('\n')).toStdString();
        ASSERT_TRUE(session.startDisplay());
        ASSERT_TRUE(session.startBus());
    }

    QTemporaryDir directory;
    DesktopSession session{directory.path(), QProcessEnvironment::systemEnvironment()};
};

TEST_F(Harness, NoProcessIsLeftBehind) {
    {
        Panel panel(session);
        ASSERT_TRUE(panel.start());
        // The panel, what draws its icons, and what the bus has started for it.
        EXPECT_GE(processesWith(session.mark()).size(), 5U);
    }
    EXPECT_TRUE(session.stop());
    EXPECT_TRUE(processesWith(session.mark()).empty());
}

TEST_F(Harness, TheBusComesBackAtItsAddress) {
    const SessionBus first(session.busAddress());
    ASSERT_TRUE(first.isConnected());
    session.killBus();
    EXPECT_TRUE(waitFor([&] { return !first.isConnected(); }));
    EXPECT_FALSE(SessionBus(session.busAddress()).isConnected());
    ASSERT_TRUE(session.startBus());
    EXPECT_TRUE(SessionBus(session.busAddress()).isConnected());
}

TEST_F(Harness, APanelWithoutIconsIsEmptyAndCanBeStartedAgain) {
    const Screen screen(session.displayName());
    Panel panel(session);
    for (int time = 0; time < 2; ++time) {
        ASSERT_TRUE(panel.start());
        const auto isDrawn = [&] {
            return screen.picture().pixel(600, Panel::kHeight / 2) !=
                   screen.picture().pixel(600, 600);
        };
        // It draws itself step by step.
        EXPECT_TRUE(
            waitFor([&] { return isDrawn() && panel.iconArea(screen.picture()) == QRect(); }));
        EXPECT_TRUE(screen.menus().isEmpty());
        panel.kill();
        EXPECT_TRUE(waitFor([&] { return !panel.takesIcons() && !isDrawn(); }));
    }
}

TEST_F(Harness, TheMonitorHearsWhatOthersSay) {
    BusMonitor monitor(session.busAddress());
    ASSERT_TRUE(monitor.catchUp());
    const SessionBus speaker(session.busAddress());
    const auto self = speaker.call({QStringLiteral("org.freedesktop.DBus"),
                                    QStringLiteral("/org/freedesktop/DBus"),
                                    QStringLiteral("org.freedesktop.DBus")},
                                   QStringLiteral("GetId"));
    ASSERT_TRUE(self);
    ASSERT_TRUE(speaker.signal(QStringLiteral("Ding")));
    ASSERT_TRUE(speaker.signal(QStringLiteral("Ding")));
    ASSERT_TRUE(monitor.catchUp());
    QStringList speakers;
    for (int number = 0; number < 20; ++number) {
        const QString name = QStringLiteral(":1.%1").arg(number);
        if (monitor.count(name, QStringLiteral("Ding")) == 2) {
            speakers.append(name);
        }
    }
    EXPECT_EQ(speakers.size(), 1);
    monitor.forget();
    ASSERT_TRUE(monitor.catchUp());
    EXPECT_TRUE(monitor.from(speakers.value(0)).isEmpty());
}

TEST(MenuRows, AreTextsAndSeparatorsAndTellTheHighlight) {
    const QRect menu(0, 0, 200, 100);
    QImage screen(menu.size(), QImage::Format_RGB32);
    screen.fill(Qt::white);
    const auto fill = [&screen](const QRect& area, QRgb colour) {
        for (int y = area.top(); y <= area.bottom(); ++y) {
            for (int x = area.left(); x <= area.right(); ++x) {
                screen.setPixel(x, y, colour);
            }
        }
    };
    fill({30, 10, 50, 8}, qRgb(0, 0, 0));        // a text
    fill({0, 30, 200, 1}, qRgb(128, 128, 128));  // a separator from edge to edge
    fill({30, 36, 50, 8}, qRgb(0, 0, 0));        // another text
    fill({20, 60, 160, 1}, qRgb(128, 128, 128)); // a separator with margins
    const QList<MenuRow> rows = menuRows(screen, menu);
    ASSERT_EQ(rows.size(), 4);
    EXPECT_EQ(rows[0].area, QRect(4, 10, 192, 8));
    EXPECT_EQ(rows[2].area, QRect(4, 36, 192, 8));
    EXPECT_FALSE(rows[0].isSeparator || rows[2].isSeparator);
    EXPECT_TRUE(rows[1].isSeparator && rows[3].isSeparator);

    EXPECT_FALSE(isHighlighted(screen, menu, rows[2]));
    fill({1, 31, 198, 20}, qRgb(0, 0, 200));
    EXPECT_TRUE(isHighlighted(screen, menu, rows[2]));
    EXPECT_FALSE(isHighlighted(screen, menu, rows[0]));
}

TEST(TrayMenuEntry, IsShownWithoutTheMarksOfMnemonics) {
    const auto shown = [](const char* label) {
        return TrayMenu::Entry{.label = QString::fromUtf8(label)}.shownText();
    };
    EXPECT_EQ(shown("_Quit"), QStringLiteral("Quit"));
    EXPECT_EQ(shown("a__b"), QStringLiteral("a_b"));
    EXPECT_EQ(shown("a & b"), QStringLiteral("a & b"));
    EXPECT_EQ(shown("a_"), QStringLiteral("a"));
    EXPECT_EQ(shown("_\u2060x"), QStringLiteral("x"));
}

} // namespace orvanta::tests
