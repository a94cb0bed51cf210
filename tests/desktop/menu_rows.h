// SPDX-License-Identifier: MIT
#pragma once

#include <QImage>
#include <QList>
#include <QRect>

namespace orvanta::tests {

/// One line of an open menu as it is seen: a text, or a separator.
struct MenuRow {
    QRect area;
    bool isSeparator = false;

    QPoint centre() const { return area.center(); }
};

/// The lines of the menu at `menu` from top to bottom, as long as none is highlighted. An entry of
/// several lines is several rows.
QList<MenuRow> menuRows(const QImage& screen, const QRect& menu);

/// Whether `row` stands out from the rest of its menu, as the one under the pointer does.
bool isHighlighted(const QImage& screen, const QRect& menu, const MenuRow& row);

} // namespace orvanta::tests
