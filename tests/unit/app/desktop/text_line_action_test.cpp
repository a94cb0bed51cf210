// SPDX-License-Identifier: MIT
#include "app/text_line_action.h"

#include <QApplication>
#include <QImage>
#include <QMenu>

#include <gtest/gtest.h>

namespace orvanta {
namespace {

/// Where `area` of the picture differs from the colour of its corner.
QRect inkIn(const QImage& picture, const QRect& area) {
    const QRgb background = picture.pixel(area.topLeft());
    QRect ink;
    for (int y = area.top(); y <= area.bottom(); ++y) {
        for (int x = area.left(); x <= area.right(); ++x) {
            if (picture.pixel(x, y) != background) {
                ink |= QRect(x, y, 1, 1);
            }
        }
    }
    return ink;
}

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

/// The line above an entry of the toolkit's own with the same text.
struct TextLineBesideAnEntry : TextLineTest {
    QAction* entry = menu.addAction(QStringLiteral("Hxyzw"));
    QAction* toggle = menu.addAction(QStringLiteral("toggle"));

    TextLineBesideAnEntry() {
        action->setText(entry->text());
        action->setFont(menu.font());
        toggle->setCheckable(true);
    }

    QImage picture() {
        menu.resize(menu.sizeHint() + QSize(50, 0));
        return menu.grab().toImage().convertToFormat(QImage::Format_RGB32);
    }
    /// Without the frame of the menu.
    QRect areaOf(QAction* of) { return menu.actionGeometry(of).adjusted(2, 1, -2, -1); }
};

TEST_F(TextLineBesideAnEntry, IsWrittenInTheSamePlace) {
    for (const auto direction : {Qt::LeftToRight, Qt::RightToLeft}) {
        QApplication::setLayoutDirection(direction);
        entry->setText(direction == Qt::LeftToRight ? QStringLiteral("Hxyzw")
                                                    : QStringLiteral("\u05D0\u05D1\u05D2"));
        action->setText(entry->text());
        const QImage shown = picture();
        const QRect lineArea = areaOf(action);
        const QRect entryArea = areaOf(entry);
        const QRect line = inkIn(shown, lineArea);
        const QRect expected = inkIn(shown, entryArea);
        ASSERT_GT(expected.width(), 10);
        EXPECT_EQ(line.translated(-lineArea.topLeft()), expected.translated(-entryArea.topLeft()));
        const bool isAtTheLeft = line.center().x() < lineArea.center().x();
        EXPECT_EQ(isAtTheLeft, direction == Qt::LeftToRight);
    }
    QApplication::setLayoutDirection(Qt::LeftToRight);
}

TEST_F(TextLineBesideAnEntry, EveryCharacterIsDrawn) {
    // Where an entry has two, the toolkit draws one.
    entry->setText(QStringLiteral("&&H&&&&_&&z&&"));
    action->setText(QStringLiteral("&H&&_&z&"));
    const QImage shown = picture();
    const QRect lineArea = areaOf(action);
    const QRect entryArea = areaOf(entry);
    EXPECT_EQ(inkIn(shown, lineArea).translated(-lineArea.topLeft()),
              inkIn(shown, entryArea).translated(-entryArea.topLeft()));
}

TEST_F(TextLineBesideAnEntry, IsWeakerUnlessItIsBold) {
    const auto darkest = [this] {
        const QImage shown = picture();
        const QRect area = areaOf(action);
        int least = 255;
        for (int y = area.top(); y <= area.bottom(); ++y) {
            for (int x = area.left(); x <= area.right(); ++x) {
                least = std::min(least, qGray(shown.pixel(x, y)));
            }
        }
        return least;
    };
    const int secondary = darkest();
    QFont bold = menu.font();
    bold.setBold(true);
    action->setFont(bold);
    EXPECT_LT(darkest(), secondary - 30);
}

TEST_F(TextLineBesideAnEntry, EveryLineIsDrawnWhole) {
    const int one = inkIn(picture(), areaOf(action)).height();
    const int spacing = QFontMetrics(menu.font()).lineSpacing();
    action->setText(QStringLiteral("Hxyzw\nHxyzw\nHxyzw"));
    EXPECT_EQ(inkIn(picture(), areaOf(action)).height(), one + 2 * spacing);
}

} // namespace
} // namespace orvanta
