// SPDX-License-Identifier: MIT
#include "app/pop_up_menu.h"

#include <QApplication>
#include <QCursor>
#include <QScreen>

#include <gmock/gmock.h>

namespace orvanta {
namespace {

using Id = MenuEntryId;
using testing::ElementsAre;

/// The platform without a screen keeps its windows so far from the upper edge, for a frame.
constexpr int kFrame = 2;

QRect screenArea() {
    return QGuiApplication::primaryScreen()->availableGeometry();
}

struct PopUpMenuTest : testing::Test {
    MenuSnapshot snapshot;
    std::vector<int> chosen;
    PopUpMenu popUp{PopUpMenu::Kind::atPointer,
                    [this](Id id) { chosen.push_back(static_cast<int>(id)); }};

    void openAt(const QPoint& place) {
        QCursor::setPos(place);
        popUp.open(menuEntries(snapshot));
        ASSERT_TRUE(popUp.isOpen());
    }
    void show() {
        popUp.show(menuEntries(snapshot));
        QCoreApplication::processEvents();
    }
    void showError(int lines) {
        snapshot.lastError = QStringList(lines, QStringLiteral("broken")).join(u'\n');
        show();
    }
    static QMenu& menu() { return *qobject_cast<QMenu*>(QApplication::activePopupWidget()); }
    static QAction* action(Id id) { return menu().actions().at(static_cast<int>(id) - 1); }
    static QPoint placeOf(Id id) {
        return menu().mapToGlobal(menu().actionGeometry(action(id)).center());
    }
    static QAction* underPointer() { return menu().actionAt(menu().mapFromGlobal(QCursor::pos())); }
    static bool isOnScreen() {
        return screenArea().adjusted(0, 0, 0, kFrame).contains(menu().geometry());
    }
};

TEST_F(PopUpMenuTest, OpensDownwardsAndGrowsDownwards) {
    openAt({100, 50});
    const QRect before = menu().geometry();
    EXPECT_EQ(before.topLeft(), QPoint(100, 50));
    QCursor::setPos(90, 40);
    showError(2);
    EXPECT_GT(menu().height(), before.height());
    EXPECT_EQ(menu().geometry().topLeft(), before.topLeft());
}

TEST_F(PopUpMenuTest, OpenedUpwardsItKeepsItsLowerEdge) {
    openAt({100, screenArea().bottom() - 5});
    const QRect before = menu().geometry();
    ASSERT_TRUE(isOnScreen());
    showError(3);
    EXPECT_GT(menu().height(), before.height());
    EXPECT_EQ(menu().geometry().bottom(), before.bottom());
    snapshot.lastError = std::nullopt;
    show();
    EXPECT_EQ(menu().geometry(), before);
}

TEST_F(PopUpMenuTest, WhereItHasNoRoomToGrowDownwardsItMovesUp) {
    openAt({100, 50});
    const QPoint lowest(100, screenArea().bottom() - menu().height() - 1);
    popUp.close();
    openAt(lowest);
    ASSERT_EQ(menu().pos(), lowest);
    QCursor::setPos(90, 40);
    showError(3);
    EXPECT_EQ(menu().geometry().bottom(), screenArea().bottom());
}

TEST_F(PopUpMenuTest, WhatIsUnderThePointerStaysThere) {
    openAt({100, screenArea().bottom() - 5});
    for (const Id id : {Id::restart, Id::openDashboard, Id::quit, Id::runtimeStatus}) {
        snapshot.lastError = std::nullopt;
        snapshot.workspaceId = std::nullopt;
        show();
        QCursor::setPos(placeOf(id));
        ASSERT_EQ(underPointer(), action(id));
        const QPoint place = placeOf(id);
        snapshot.workspaceId = QStringLiteral("w42");
        showError(1);
        EXPECT_EQ(placeOf(id).y(), place.y()) << static_cast<int>(id);
        EXPECT_TRUE(isOnScreen()) << static_cast<int>(id);
    }
}

TEST_F(PopUpMenuTest, ItStaysOnTheScreenWhateverIsUnderThePointer) {
    openAt({100, 0});
    QCursor::setPos(placeOf(Id::restart));
    showError(5);
    EXPECT_EQ(menu().geometry().top(), screenArea().top() + kFrame);
    EXPECT_TRUE(isOnScreen());
}

TEST_F(PopUpMenuTest, WhenTheLineUnderThePointerGoesTheMenuStaysWhereItIs) {
    snapshot.workspaceId = QStringLiteral("w42");
    openAt({100, 50});
    const QPoint corner = menu().pos();
    QCursor::setPos(placeOf(Id::workspace));
    snapshot.workspaceId = std::nullopt;
    show();
    EXPECT_EQ(menu().pos(), corner);
}

TEST_F(PopUpMenuTest, AnErrorHigherThanTheScreenLeavesTheMenuOnIt) {
    openAt({100, 50});
    showError(200);
    EXPECT_TRUE(popUp.isOpen());
    EXPECT_TRUE(isOnScreen());
    snapshot.lastError = std::nullopt;
    show();
    EXPECT_TRUE(isOnScreen());
    EXPECT_LT(menu().height(), screenArea().height());
}

TEST_F(PopUpMenuTest, ClosesBeforeTheChoiceIsTold) {
    openAt({100, 50});
    action(Id::restart)->trigger();
    EXPECT_THAT(chosen, ElementsAre(8));
    EXPECT_FALSE(popUp.isOpen());
}

TEST_F(PopUpMenuTest, ClosesWhenTold) {
    openAt({100, 50});
    popUp.close();
    EXPECT_FALSE(popUp.isOpen());
    EXPECT_FALSE(popUp.wasClosedByThisClick());
}

TEST_F(PopUpMenuTest, AKeyThatClosesItIsNoClick) {
    openAt({100, 50});
    menu().hide();
    EXPECT_FALSE(popUp.isOpen());
    EXPECT_FALSE(popUp.wasClosedByThisClick());
}

/// What the toolkit complains of.
QStringList warnings;

struct PopUpWindow : testing::Test {
    MenuSnapshot snapshot;
    std::vector<int> chosen;
    PopUpMenu popUp{PopUpMenu::Kind::window,
                    [this](Id id) { chosen.push_back(static_cast<int>(id)); }};

    static QMenu* window() {
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            if (widget->isVisible() && !widget->windowTitle().isEmpty()) {
                return qobject_cast<QMenu*>(widget);
            }
        }
        return nullptr;
    }
};

TEST_F(PopUpWindow, IsNoPopUpAndBearsTheNameOfTheApplication) {
    QCoreApplication::setApplicationName(QStringLiteral("Orvanta"));
    popUp.open(menuEntries(snapshot));
    EXPECT_TRUE(popUp.isOpen());
    EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
    ASSERT_NE(window(), nullptr);
    EXPECT_EQ(window()->windowTitle(), QStringLiteral("Orvanta"));
    EXPECT_EQ(window()->size(), window()->sizeHint());
}

TEST_F(PopUpWindow, GoesWithoutAWarning) {
    warnings.clear();
    const QtMessageHandler before =
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString& text) {
            // This toolkit's platform without a screen has few windows to speak of.
            if (!text.startsWith(QLatin1String("This plugin does not support"))) {
                warnings.append(text);
            }
        });
    {
        PopUpMenu open(PopUpMenu::Kind::window, [](Id) {});
        open.open(menuEntries(snapshot));
        PopUpMenu closed(PopUpMenu::Kind::window, [](Id) {});
        closed.open(menuEntries(snapshot));
        closed.close();
    }
    qInstallMessageHandler(before);
    EXPECT_EQ(warnings, QStringList());
}

TEST_F(PopUpWindow, FollowsTheEntriesAndClosesWithTheChoice) {
    QCoreApplication::setApplicationName(QStringLiteral("Orvanta"));
    popUp.open(menuEntries(snapshot));
    ASSERT_NE(window(), nullptr);
    const int height = window()->height();
    snapshot.workspaceId = QStringLiteral("w42");
    popUp.show(menuEntries(snapshot));
    EXPECT_GT(window()->height(), height);
    window()->actions().last()->trigger();
    EXPECT_THAT(chosen, ElementsAre(16));
    EXPECT_FALSE(popUp.isOpen());
    EXPECT_EQ(window(), nullptr);
}

} // namespace
} // namespace orvanta
