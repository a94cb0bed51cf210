// SPDX-License-Identifier: MIT
#include "app/pop_up_menu.h"
#include "unit/app/print_text.h"

#include <QApplication>

#include <gtest/gtest.h>

namespace orvanta {
namespace {

struct PopUpMenuTexts : testing::Test {
    MenuSnapshot snapshot;
    PopUpMenu popUp{PopUpMenu::Kind::atPointer, [](MenuEntryId) {}};

    static QMenu& menu() { return *qobject_cast<QMenu*>(QApplication::activePopupWidget()); }
    static QAction* workspace() {
        return menu().actions().at(static_cast<int>(MenuEntryId::workspace) - 1);
    }
    /// Opens the menu, or changes the open one.
    void showWorkspace(const QString& text) {
        snapshot.workspaceId = text;
        if (popUp.isOpen()) {
            popUp.show(menuEntries(snapshot));
        } else {
            popUp.open(menuEntries(snapshot));
        }
    }
    int widthWith(const QString& text) {
        showWorkspace(text);
        return menu().sizeHint().width();
    }
};

TEST_F(PopUpMenuTexts, AreInTheWritingOfNoHost) {
    showWorkspace(QStringLiteral("a_b & c"));
    EXPECT_EQ(workspace()->text(), QStringLiteral("a_b & c"));
}

TEST_F(PopUpMenuTexts, EachCharacterOfALineTakesItsRoom) {
    const QString wide = QStringLiteral("w").repeated(50);
    const int without = widthWith(wide);
    EXPECT_GT(widthWith(wide + u'&'), without);
    EXPECT_GT(widthWith(wide + u'_'), without);
    EXPECT_GT(widthWith(wide + QStringLiteral("&&&")), widthWith(wide + QStringLiteral("&&")));
}

TEST_F(PopUpMenuTexts, EachLineOfAnErrorTakesItsRoom) {
    const auto heightWith = [this](const char* error) {
        snapshot.lastError = QLatin1String(error);
        showWorkspace(QStringLiteral("w42"));
        return menu().sizeHint().height();
    };
    const int one = heightWith("a");
    const int two = heightWith("a\nb");
    EXPECT_GT(two, one);
    EXPECT_EQ(heightWith("a\nb\nc\nd") - two, 2 * (two - one));
}

} // namespace
} // namespace orvanta
