// SPDX-License-Identifier: MIT
#include "desktop/menu_by_mouse.h"

#include <QDir>
#include <QFile>

namespace orvanta::tests {

/// With either button: one opens the panel's drawing of the menu, the other the tray's own.
class TrayOpenedMenu : public MenuByMouse, public ::testing::WithParamInterface<Person::Button> {
protected:
    void open() { MenuByMouse::open(GetParam()); }
};

TEST_P(TrayOpenedMenu, IsAtTheIcon) {
    startAndSettle();
    ASSERT_TRUE(waitFor([this] { return !iconArea().isEmpty(); })) << scene();
    const QRect icon = iconArea();
    open();
    // Beside the frame that some panels draw around the icon, or at the pointer.
    constexpr int kFrame = 8;
    EXPECT_GE(area.left(), icon.left() - kFrame) << scene();
    EXPECT_LE(area.left(), icon.right()) << scene();
    EXPECT_LE(area.top(), Panel::kHeight) << scene();
}

TEST_P(TrayOpenedMenu, ShowsTheStateOfNowAfterAChange) {
    startAndSettle();
    ASSERT_TRUE(choose(QStringLiteral("Sign In / Pair")));
    ASSERT_TRUE(waitForToolTip(QStringLiteral("Orvanta Online"))) << scene();
    ASSERT_TRUE(waitFor([this] { return menu().entries().value(1).isVisible; })) << scene();
    open();
    ASSERT_TRUE(pointAt(QStringLiteral("Sign Out"))) << scene();
    ASSERT_TRUE(person->pointAt(placeOf(QStringLiteral("Sign In / Pair"))));
    EXPECT_TRUE(waitFor([this] { return !isUnderPointer(QStringLiteral("Sign Out")); })) << scene();
    EXPECT_FALSE(isUnderPointer(QStringLiteral("Sign In / Pair")));
}

TEST_P(TrayOpenedMenu, EveryLineOfAnErrorIsDrawn) {
    // Its text names this path.
    const QString directory = home.filePath(QStringLiteral("deep/").repeated(20));
    QDir().mkpath(directory);
    QFile obstacle(directory + QStringLiteral("autostart"));
    ASSERT_TRUE(obstacle.open(QIODevice::WriteOnly));
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), directory);
    startAndSettle();
    ASSERT_TRUE(choose(QStringLiteral("Launch at Login")));
    ASSERT_TRUE(waitFor([this] { return menu().entries().value(2).isVisible; })) << scene();
    const std::optional<QRect> opened = openMenu(GetParam());
    ASSERT_TRUE(opened) << scene();
    const qsizetype entries = shownTexts().size();
    const qsizetype lines = shownTexts().join(QLatin1Char('\n')).count(QLatin1Char('\n')) + 1;
    EXPECT_GE(lines, entries + 3) << scene();
    EXPECT_EQ(menuRows(screen->picture(), *opened).size(), lines) << scene();
}

INSTANTIATE_TEST_SUITE_P(Buttons, TrayOpenedMenu,
                         ::testing::Values(Person::Button::right, Person::Button::left),
                         [](const auto& button) {
                             return button.param == Person::Button::left ? "Left" : "Right";
                         });

} // namespace orvanta::tests
