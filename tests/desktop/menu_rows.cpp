// SPDX-License-Identifier: MIT
#include "desktop/menu_rows.h"

#include <QHash>

#include <algorithm>

namespace orvanta::tests {
namespace {

/// Left of the texts and the check marks nothing but background is ever drawn.
constexpr int kFrame = 4;
constexpr int kThickestSeparator = 2;

QRect insideOf(const QImage& screen, const QRect& menu) {
    return menu.adjusted(kFrame, kFrame, -kFrame, -kFrame) & screen.rect();
}

/// The most frequent colour along the left edge.
QRgb backgroundOf(const QImage& screen, const QRect& inside) {
    QHash<QRgb, int> counts;
    for (int y = inside.top(); y <= inside.bottom(); ++y) {
        ++counts[screen.pixel(inside.left(), y)];
    }
    const QList<QRgb> colours = counts.keys();
    const auto most =
        std::max_element(colours.begin(), colours.end(),
                         [&counts](QRgb one, QRgb other) { return counts[one] < counts[other]; });
    return most == colours.end() ? 0 : *most;
}

bool isDrawnOn(const QImage& screen, const QRect& line, QRgb background) {
    for (int x = line.left(); x <= line.right(); ++x) {
        if (screen.pixel(x, line.top()) != background) {
            return true;
        }
    }
    return false;
}

} // namespace

QList<MenuRow> menuRows(const QImage& screen, const QRect& menu) {
    const QRect inside = insideOf(screen, menu);
    const QRgb background = backgroundOf(screen, inside);
    QList<MenuRow> rows;
    bool wasDrawnOn = false;
    for (int y = inside.top(); y <= inside.bottom(); ++y) {
        const QRect line(inside.left(), y, inside.width(), 1);
        const bool isDrawn = isDrawnOn(screen, line, background);
        if (isDrawn && !wasDrawnOn) {
            rows.append(MenuRow());
        }
        if (isDrawn) {
            rows.last().area |= line;
        }
        wasDrawnOn = isDrawn;
    }
    for (MenuRow& row : rows) {
        row.isSeparator = row.area.height() <= kThickestSeparator;
    }
    return rows;
}

bool isHighlighted(const QImage& screen, const QRect& menu, const MenuRow& row) {
    const QRect inside = insideOf(screen, menu);
    return screen.pixel(inside.left(), row.centre().y()) != backgroundOf(screen, inside);
}

} // namespace orvanta::tests
