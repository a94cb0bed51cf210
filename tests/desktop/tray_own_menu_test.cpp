// SPDX-License-Identifier: MIT
#include "desktop/menu_by_mouse.h"

#include <QElapsedTimer>

#include <algorithm>

namespace orvanta::tests {

/// The menu that the tray draws itself, on a click with the left button.
class TrayOwnMenu : public MenuByMouse {
protected:
    static constexpr Person::Button kButton = Person::Button::left;
    /// Where there is nothing but the desktop.
    static constexpr QPoint kElsewhere{900, 400};

    void start(Panel::Edge edge) {
        panel = std::make_unique<Panel>(session, edge);
        startAndSettle();
    }
    void showWorkspace() {
        ASSERT_TRUE(connector().post(QStringLiteral("/demo/status-document"),
                                     R"({"state":"NEEDS_LOGIN","workspaceId":"w42"})"));
        ASSERT_TRUE(waitForEntry(QStringLiteral("w42"))) << scene();
    }
    QRect menuArea() const { return screen->menus().value(0); }
    QRect screenArea() const { return screen->picture().rect(); }
    bool isHighlightedAt(const QPoint& place) const {
        MenuRow row;
        row.area = QRect(place, QSize(1, 1));
        return isHighlighted(screen->picture(), menuArea(), row);
    }
};

TEST_F(TrayOwnMenu, AtTheLowerEdgeItGrowsUpwards) {
    start(Panel::Edge::lower);
    open(kButton);
    ASSERT_TRUE(person->pointAt(kElsewhere));
    showWorkspace();
    ASSERT_TRUE(waitFor([this] { return menuArea().height() > area.height(); })) << scene();
    EXPECT_TRUE(waitFor([this] { return menuArea().bottom() == area.bottom(); })) << scene();
    EXPECT_TRUE(screenArea().contains(menuArea()));
    // Quit can be seen and chosen.
    ASSERT_TRUE(chooseByMouse(QStringLiteral("Quit"))) << scene();
    EXPECT_EQ(waitForExit(), 0);
}

TEST_F(TrayOwnMenu, ALineThatAppearsMovesNoEntryAwayFromUnderThePointer) {
    start(Panel::Edge::lower);
    open(kButton);
    ASSERT_TRUE(pointAt(QStringLiteral("Restart"))) << scene();
    const QPoint pointer = placeOf(QStringLiteral("Restart"));
    showWorkspace();
    ASSERT_TRUE(waitFor([this] { return menuArea().height() > area.height(); })) << scene();
    EXPECT_TRUE(waitFor([&] { return isHighlightedAt(pointer); })) << scene();
    EXPECT_TRUE(screenArea().contains(menuArea()));
    keepPicture(QStringLiteral("menu-grown"), menuArea());
    ASSERT_TRUE(person->click(Person::Button::left, pointer));
    EXPECT_TRUE(waitFor([this] {
        return requests(QStringLiteral("POST /api/server/restart")) == 1;
    })) << scene();
}

TEST_F(TrayOwnMenu, AClickElsewhereClosesIt) {
    start(Panel::Edge::upper);
    open(kButton);
    ASSERT_TRUE(person->click(Person::Button::left, kElsewhere));
    EXPECT_TRUE(waitFor([this] { return !isMenuOpen(); })) << scene();
    open(kButton);
}

TEST_F(TrayOwnMenu, AnotherClickOnTheIconClosesIt) {
    start(Panel::Edge::upper);
    ASSERT_TRUE(waitFor([this] { return !iconArea().isEmpty(); })) << scene();
    const QPoint besideTheMenu = iconArea().topLeft() + QPoint(1, 1);
    open(kButton);
    ASSERT_TRUE(person->click(kButton, besideTheMenu));
    // A tool tip may come up instead.
    const auto isClosed = [this] {
        const QList<QRect> open = screen->menus();
        return std::none_of(open.begin(), open.end(),
                            [this](const QRect& menu) { return menu.size() == area.size(); });
    };
    EXPECT_TRUE(waitFor(isClosed)) << scene();
    EXPECT_TRUE(holdsFor(isClosed, std::chrono::milliseconds(500))) << scene();
    ASSERT_TRUE(person->pointAt(kElsewhere));
    ASSERT_TRUE(waitFor([this] { return !isMenuOpen(); })) << scene();
    open(kButton);
    // As from a panel that learns of the click in spite of the open menu.
    ASSERT_TRUE(item->activate());
    EXPECT_TRUE(waitFor(isClosed)) << scene();
}

TEST_F(TrayOwnMenu, TwoQuickClicksLeaveOneMenuAtMostAndTheIconAtWork) {
    start(Panel::Edge::upper);
    ASSERT_TRUE(waitFor([this] { return !iconArea().isEmpty(); })) << scene();
    for (int time = 0; time < 3; ++time) {
        const QPoint icon = iconArea().center();
        ASSERT_TRUE(person->click(kButton, icon));
        ASSERT_TRUE(person->click(kButton, icon));
        EXPECT_TRUE(holdsFor([this] { return screen->menus().size() <= 1; },
                             std::chrono::milliseconds(700)))
            << scene();
        ASSERT_TRUE(person->press(QStringLiteral("Escape")));
        ASSERT_TRUE(waitFor([this] { return !isMenuOpen(); })) << scene();
    }
    open(kButton);
}

TEST_F(TrayOwnMenu, AConnectorThatComesAndGoesLeavesItWhereItIs) {
    start(Panel::Edge::upper);
    open(kButton);
    ASSERT_TRUE(pointAt(QStringLiteral("Restart"))) << scene();
    for (int time = 0; time < 3; ++time) {
        ASSERT_TRUE(connector().post(QStringLiteral("/demo/state?value=NEEDS_LOGIN")));
        ASSERT_TRUE(waitForEntry(QStringLiteral("Status: Not Paired"))) << scene();
        EXPECT_TRUE(
            holdsFor([this] { return menuArea() == area; }, std::chrono::milliseconds(400)));
        ASSERT_TRUE(connector().post(QStringLiteral("/demo/state?value=STARTING")));
        ASSERT_TRUE(waitForEntry(QStringLiteral("Status: Offline"))) << scene();
        EXPECT_TRUE(
            holdsFor([this] { return menuArea() == area; }, std::chrono::milliseconds(400)));
    }
    EXPECT_TRUE(isUnderPointer(QStringLiteral("Restart")));
}

TEST_F(TrayOwnMenu, ItGoesWithTheBusAndTheTrayLivesOn) {
    start(Panel::Edge::upper);
    open(kButton);
    session.killBus();
    EXPECT_TRUE(waitFor([this] { return !isMenuOpen(); }));
    EXPECT_TRUE(connector().answers());
    EXPECT_EQ(tray.state(), QProcess::Running);

    panel = std::make_unique<Panel>(session);
    ASSERT_TRUE(session.startBus());
    connectToBus();
    ASSERT_TRUE(panel->start()) << scene();
    ASSERT_TRUE(waitForItem()) << scene();
    open(kButton);
}

TEST_F(TrayOwnMenu, QuitEndsTheTrayAtOnce) {
    constexpr qint64 kAtOnceMs = ORVANTA_SANITIZED ? 2'000 : 200;
    start(Panel::Edge::upper);
    open(kButton);
    ASSERT_TRUE(pointAt(QStringLiteral("Quit"))) << scene();
    const pid_t pid = trayPid();
    QElapsedTimer elapsed;
    elapsed.start();
    ASSERT_TRUE(person->click(Person::Button::left, placeOf(QStringLiteral("Quit"))));
    EXPECT_TRUE(waitFor([&] { return !isAlive(pid); })) << scene();
    EXPECT_LT(elapsed.elapsed(), kAtOnceMs);
}

/// An X server inside Wayland, as far as the tray can tell.
TEST_F(TrayOwnMenu, WhereNobodyMayPlaceMenusItIsAWindowThatTheIconOpensAndCloses) {
    environment.insert(QStringLiteral("WAYLAND_DISPLAY"), QStringLiteral("wayland-none"));
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
    start(Panel::Edge::upper);
    const QList<QRect> before = screen->windows();
    const auto count = [this] { return screen->windows().size(); };
    for (int time = 0; time < 2; ++time) {
        ASSERT_TRUE(item->activate());
        ASSERT_TRUE(waitFor([&] { return count() == before.size() + 1; })) << scene();
        EXPECT_FALSE(isMenuOpen());
        ASSERT_TRUE(item->activate());
        ASSERT_TRUE(waitFor([&] { return count() == before.size(); })) << scene();
    }
    EXPECT_EQ(trayErrors(), "");
}

} // namespace orvanta::tests
