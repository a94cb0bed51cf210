// SPDX-License-Identifier: MIT
#include "app/text_line_action.h"

#include <gtest/gtest.h>

#include <QMenu>

namespace orvanta {
namespace {

struct TextLineTest : testing::Test {
    QMenu menu;
    TextLineAction* action = new TextLineAction(&menu);

    TextLineTest() { menu.addAction(action); }

    int heightOf(const QString& text) {
        action->setText(text);
        return menu.sizeHint().height();
    }

    int widthOf(const QString& text) {
        action->setText(text);
        return menu.sizeHint().width();
    }
};

TEST_F(TextLineTest, EveryLineOfTheTextMakesTheMenuHigher) {
    const int one = heightOf(QStringLiteral("a"));
    const int two = heightOf(QStringLiteral("a\nb"));
    const int five = heightOf(QStringLiteral("a\nb\nc\nd\ne"));
    EXPECT_GT(two, one);
    EXPECT_EQ(five - two, 3 * (two - one));
}

TEST_F(TextLineTest, AnAmpersandTakesItsRoom) {
    EXPECT_GT(widthOf(QStringLiteral("wwwwwwww & wwwwwwww")),
              widthOf(QStringLiteral("wwwwwwww  wwwwwwww")));
}

} // namespace
} // namespace orvanta
