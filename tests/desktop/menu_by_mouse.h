// SPDX-License-Identifier: MIT
#pragma once

#include "desktop/desktop_test.h"
#include "desktop/menu_rows.h"

namespace orvanta::tests {

/// A menu that is opened and chosen from with the mouse.
class MenuByMouse : public DesktopTest {
protected:
    /// Opens it and notes what is where.
    void open(Person::Button button) {
        const std::optional<QRect> opened = openMenu(button);
        ASSERT_TRUE(opened) << scene();
        area = *opened;
        // A menu that stands still may be one that is yet to be drawn.
        ASSERT_TRUE(waitFor([this] {
            rows = menuRows(screen->picture(), area);
            texts = shownTexts();
            return rows.size() == texts.size();
        })) << rows.size()
            << " rows are drawn\n"
            << scene();
    }

    /// The row of the entry that was shown so when the menu opened, each entry taking one row.
    MenuRow rowOf(const QString& text) const { return rows.value(texts.indexOf(text)); }
    QPoint placeOf(const QString& text) const { return rowOf(text).centre(); }
    bool isUnderPointer(const QString& text) const {
        return isHighlighted(screen->picture(), area, rowOf(text));
    }
    bool pointAt(const QString& text) const {
        return person->pointAt(placeOf(text)) && waitFor([&] { return isUnderPointer(text); });
    }
    bool chooseByMouse(const QString& text) const {
        return pointAt(text) && person->click(Person::Button::left, placeOf(text));
    }

    QRect area;
    QList<MenuRow> rows;
    QStringList texts;
};

} // namespace orvanta::tests
