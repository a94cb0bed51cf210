// SPDX-License-Identifier: MIT
#include "desktop/bus_monitor.h"
#include "desktop/menu_by_mouse.h"

namespace orvanta::tests {

/// With either button: one opens the panel's drawing of the menu, the other the tray's own.
class TrayMouse : public MenuByMouse, public ::testing::WithParamInterface<Person::Button> {
protected:
    void open() { MenuByMouse::open(GetParam()); }
};

TEST_P(TrayMouse, EveryVisibleEntryIsDrawnAndTheGreyOnesAreNotHighlighted) {
    startAndSettle();
    open();
    for (qsizetype index = 0; index < texts.size(); ++index) {
        EXPECT_EQ(rows[index].isSeparator, texts[index] == QLatin1String("-")) << index;
    }
    ASSERT_TRUE(person->pointAt(placeOf(QStringLiteral("Restart"))));
    ASSERT_TRUE(waitFor([this] { return isUnderPointer(QStringLiteral("Restart")); })) << scene();
    ASSERT_TRUE(person->pointAt(placeOf(QStringLiteral("Sign Out"))));
    EXPECT_TRUE(waitFor([this] { return !isUnderPointer(QStringLiteral("Restart")); })) << scene();
    EXPECT_FALSE(isUnderPointer(QStringLiteral("Sign Out")));
}

TEST_P(TrayMouse, RestartRestarts) {
    startAndSettle();
    const int first = connectorPid();
    open();
    ASSERT_TRUE(chooseByMouse(QStringLiteral("Restart"))) << scene();
    ASSERT_TRUE(waitForNewConnector(first)) << scene();
    EXPECT_EQ(requests(QStringLiteral("POST /api/server/restart")), 1);
    EXPECT_TRUE(waitFor([this] { return !isMenuOpen(); })) << scene();
}

TEST_P(TrayMouse, QuitQuits) {
    startAndSettle();
    const pid_t child = connectorPid();
    open();
    ASSERT_TRUE(chooseByMouse(QStringLiteral("Quit"))) << scene();
    EXPECT_EQ(waitForExit(), 0);
    EXPECT_TRUE(waitFor([&] { return !isAlive(child); }));
    EXPECT_TRUE(waitFor([this] { return iconArea().isEmpty() && !isMenuOpen(); })) << scene();
}

TEST_P(TrayMouse, EscapeClosesItAndItOpensAgain) {
    startAndSettle();
    for (int time = 0; time < 2; ++time) {
        open();
        ASSERT_TRUE(person->press(QStringLiteral("Escape")));
        ASSERT_TRUE(waitFor([this] { return !isMenuOpen(); })) << scene();
    }
    EXPECT_EQ(starts(), 1);
}

TEST_P(TrayMouse, AnOpenMenuFollowsTheConnectorUnderThePointer) {
    startAndSettle();
    open();
    ASSERT_TRUE(person->pointAt(placeOf(QStringLiteral("Restart"))));
    ASSERT_TRUE(waitFor([this] { return isUnderPointer(QStringLiteral("Restart")); })) << scene();
    const QRect before = area;
    const QImage status = screen->picture().copy(rows.first().area);
    BusMonitor monitor(session.busAddress());
    ASSERT_TRUE(monitor.catchUp());
    monitor.forget();

    ASSERT_TRUE(connector().post(QStringLiteral("/demo/state?value=STARTING")));
    ASSERT_TRUE(waitForEntry(QStringLiteral("Status: Offline"))) << scene();
    EXPECT_TRUE(waitFor([&] { return screen->picture().copy(rows.first().area) != status; }))
        << scene();
    EXPECT_EQ(screen->menus(), QList<QRect>{before});
    EXPECT_TRUE(isUnderPointer(QStringLiteral("Restart")));
    ASSERT_TRUE(monitor.catchUp());
    EXPECT_GE(monitor.count(item->uniqueName(), QStringLiteral("ItemsPropertiesUpdated")), 1);
    EXPECT_EQ(monitor.count(item->uniqueName(), QStringLiteral("LayoutUpdated")), 0);
    ASSERT_TRUE(person->click(Person::Button::left, placeOf(QStringLiteral("Restart"))));
    EXPECT_TRUE(waitFor([this] {
        return requests(QStringLiteral("POST /api/server/restart")) == 1;
    })) << scene();
}

TEST_P(TrayMouse, AnEntryThatAppearsInAnOpenMenuIsDrawnAndLeavesItOpen) {
    startAndSettle();
    open();
    const QImage before = screen->picture().copy(area);
    BusMonitor monitor(session.busAddress());
    ASSERT_TRUE(monitor.catchUp());
    monitor.forget();
    ASSERT_TRUE(connector().post(QStringLiteral("/demo/status-document"),
                                 R"({"state":"NEEDS_LOGIN","workspaceId":"w42"})"));
    ASSERT_TRUE(waitForEntry(QStringLiteral("w42"))) << scene();
    ASSERT_TRUE(waitFor([&] { return screen->picture().copy(area) != before; })) << scene();
    // Some panels let the menu grow, others let it scroll; none may close it.
    const auto isOpen = [this] {
        const QList<QRect> open = screen->menus();
        return open.size() == 1 && open.first().topLeft() == area.topLeft();
    };
    EXPECT_TRUE(holdsFor(isOpen, std::chrono::milliseconds(500))) << scene();
    ASSERT_TRUE(monitor.catchUp());
    EXPECT_EQ(monitor.count(item->uniqueName(), QStringLiteral("LayoutUpdated")), 0);
}

TEST_P(TrayMouse, ItsPictures) {
    const QString button =
        GetParam() == Person::Button::left ? QStringLiteral("left") : QStringLiteral("right");
    const auto keep = [&](const QString& name) {
        const std::optional<QRect> opened = openMenu(GetParam());
        ASSERT_TRUE(opened) << scene();
        // With the panel above it.
        keepPicture(name + QLatin1Char('-') + button,
                    QRect(QPoint(opened->left(), 0), opened->bottomRight()));
        ASSERT_TRUE(person->press(QStringLiteral("Escape")));
        ASSERT_TRUE(waitFor([this] { return !isMenuOpen(); })) << scene();
    };
    startAndSettle();
    ASSERT_TRUE(choose(QStringLiteral("Sign In / Pair")));
    ASSERT_TRUE(waitForEntry(QStringLiteral("Status: Online"))) << scene();
    ASSERT_TRUE(waitFor([this] { return menu().entries().value(1).isVisible; })) << scene();
    keep(QStringLiteral("menu-workspace"));

    ASSERT_TRUE(choose(QStringLiteral("Sign Out")));
    ASSERT_TRUE(waitForEntry(QStringLiteral("Status: Not Paired"))) << scene();
    // Nobody listens there, which takes more than a line to say.
    writeStateFile(QStringLiteral("config.json"),
                   R"({"runtimeUpdates":{"manifestBaseUrl":"http://127.0.0.1:9"}})");
    ASSERT_TRUE(choose(QStringLiteral("Check for Runtime Updates")));
    ASSERT_TRUE(waitFor([this] { return menu().entries().value(2).isVisible; })) << scene();
    EXPECT_EQ(menu().entries().value(2).shownText().count(QLatin1Char('\n')), 1) << scene();
    keep(QStringLiteral("menu-error"));
}

INSTANTIATE_TEST_SUITE_P(Buttons, TrayMouse,
                         ::testing::Values(Person::Button::right, Person::Button::left),
                         [](const auto& button) {
                             return button.param == Person::Button::left ? "Left" : "Right";
                         });

} // namespace orvanta::tests
