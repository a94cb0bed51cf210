// SPDX-License-Identifier: MIT
#include "app/icons/menu_bar_icons.h"

#include <gtest/gtest.h>

#include <QColor>
#include <QImage>
#include <QPainter>
#include <QPixmap>

#include <algorithm>
#include <cmath>
#include <ostream>
#include <utility>

namespace orvanta {

void PrintTo(ConnectorMenuState state, std::ostream* stream) {
    *stream << menuBarIconName(state).toStdString();
}

namespace {

using State = ConnectorMenuState;

constexpr int kSizes[] = {16, 18, 20, 22, 24, 32, 36, 40, 44, 48, 64, 96, 128};

/// What the guidelines for accessible graphics ask of a picture against its neighbours.
constexpr double kVisibleContrast = 3.0;

QImage picture(State state, int size) {
    return QImage(QStringLiteral(":/icons/%1/%2.png").arg(menuBarIconName(state)).arg(size));
}

QImage onPanel(const QImage& picture, const QColor& panel) {
    QImage image(picture.size(), QImage::Format_RGB32);
    image.fill(panel);
    QPainter(&image).drawImage(0, 0, picture);
    return image;
}

double linear(int channel) {
    const double value = channel / 255.0;
    return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
}

double luminance(const QColor& colour) {
    return 0.2126 * linear(colour.red()) + 0.7152 * linear(colour.green()) +
           0.0722 * linear(colour.blue());
}

/// From 1, the same lightness, to 21, black and white.
double contrast(const QColor& one, const QColor& other) {
    const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
    return (lighter + 0.05) / (darker + 0.05);
}

/// Perceived lightness: 0 is black, 100 is white.
double lightness(const QColor& colour) {
    const double value = luminance(colour);
    return value > 0.008856 ? 116 * std::cbrt(value) - 16 : 903.3 * value;
}

int pixelsThatStandOut(const QImage& picture, const QColor& panel) {
    const QImage image = onPanel(picture, panel);
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            count += contrast(image.pixelColor(x, y), panel) >= kVisibleContrast ? 1 : 0;
        }
    }
    return count;
}

/// Pixels that differ with all colour taken away, by more than two colours can that stand out from
/// light and dark panels alike: their lightness lies between 45 and 58.
int pixelsThatDifferInGrey(const QImage& one, const QImage& other) {
    int count = 0;
    for (int y = 0; y < one.height(); ++y) {
        for (int x = 0; x < one.width(); ++x) {
            const double difference =
                lightness(one.pixelColor(x, y)) - lightness(other.pixelColor(x, y));
            count += std::abs(difference) >= 20 ? 1 : 0;
        }
    }
    return count;
}

class MenuBarIcon : public testing::TestWithParam<State> {};

INSTANTIATE_TEST_SUITE_P(States, MenuBarIcon,
                         testing::Values(State::offline, State::notPaired, State::online));

TEST(MenuBarIconName, IsThatOfTheState) {
    EXPECT_EQ(menuBarIconName(State::offline), QStringLiteral("MenuBarOffline"));
    EXPECT_EQ(menuBarIconName(State::notPaired), QStringLiteral("MenuBarNotPaired"));
    EXPECT_EQ(menuBarIconName(State::online), QStringLiteral("MenuBarOnline"));
}

TEST_P(MenuBarIcon, HasEverySizeThatPanelsAskFor) {
    QList<QSize> expected;
    for (const int size : kSizes) {
        expected.append(QSize(size, size));
        EXPECT_EQ(picture(GetParam(), size).size(), QSize(size, size));
    }
    EXPECT_EQ(menuBarIcon(GetParam()).availableSizes(), expected);
}

TEST_P(MenuBarIcon, ShowsThePictureDrawnForTheSize) {
    for (const int size : kSizes) {
        const QImage shown = menuBarIcon(GetParam()).pixmap(QSize(size, size)).toImage();
        const QImage drawn = picture(GetParam(), size).convertToFormat(shown.format());
        ASSERT_FALSE(drawn.isNull()) << size;
        EXPECT_EQ(shown, drawn) << size;
    }
}

TEST_P(MenuBarIcon, ShowsThePictureOfTwiceTheSizeOnAFineScreen) {
    for (const int size : {16, 18, 20, 22, 24, 32, 48, 64}) {
        QImage shown = menuBarIcon(GetParam()).pixmap(QSize(size, size), 2.0).toImage();
        EXPECT_EQ(shown.devicePixelRatio(), 2.0) << size;
        shown.setDevicePixelRatio(1.0);
        const QImage drawn = picture(GetParam(), 2 * size).convertToFormat(shown.format());
        ASSERT_FALSE(drawn.isNull()) << size;
        EXPECT_EQ(shown, drawn) << size;
    }
}

TEST_P(MenuBarIcon, KeepsItsOwnColours) {
    const QImage image = picture(GetParam(), 16);
    int coloured = 0;
    for (int i = 0; i < 256; ++i) {
        const QColor colour = image.pixelColor(i % 16, i / 16);
        coloured += colour.alpha() == 255 && colour.saturation() >= 64 ? 1 : 0;
    }
    EXPECT_GE(coloured, 256 / 8);
    EXPECT_FALSE(menuBarIcon(GetParam()).isMask());
}

TEST_P(MenuBarIcon, HasTransparentCorners) {
    for (const int size : kSizes) {
        const QImage image = picture(GetParam(), size);
        ASSERT_FALSE(image.isNull()) << size;
        for (const int x : {0, size - 1}) {
            for (const int y : {0, size - 1}) {
                EXPECT_EQ(image.pixelColor(x, y).alpha(), 0) << size << " at " << x << "," << y;
            }
        }
    }
}

// An outline one pixel wide covers a sixth of the square; a picture has to be more than that.
TEST_P(MenuBarIcon, StandsOutFromLightAndDarkPanels) {
    for (const char* panel : {"#ffffff", "#f0f0f0", "#202020", "#000000"}) {
        for (const int size : kSizes) {
            EXPECT_GE(pixelsThatStandOut(picture(GetParam(), size), QColor(QLatin1String(panel))),
                      size * size / 5)
                << size << " on " << panel;
        }
    }
}

// An eighth of the square is a stroke two pixels wide across the whole picture.
TEST(MenuBarIcons, DifferInShapeAndNotInColourAlone) {
    const std::pair<State, State> pairs[] = {{State::offline, State::notPaired},
                                             {State::notPaired, State::online},
                                             {State::online, State::offline}};
    for (const char* panel : {"#f0f0f0", "#808080", "#202020"}) {
        const QColor colour{QLatin1String(panel)};
        for (const auto& [one, other] : pairs) {
            EXPECT_GE(pixelsThatDifferInGrey(onPanel(picture(one, 16), colour),
                                             onPanel(picture(other, 16), colour)),
                      256 / 8)
                << testing::PrintToString(one) << " and " << testing::PrintToString(other) << " on "
                << panel;
        }
    }
}

} // namespace
} // namespace orvanta
