// SPDX-License-Identifier: MIT
#include "app/pop_up_menu.h"

#include "app/desktop_menu_text.h"
#include "app/text_line_action.h"

#include <QApplication>
#include <QCursor>
#include <QScreen>

#include <algorithm>

namespace orvanta {
namespace {

EntryMenu::Look ownLook() {
    return {
        .text = [](const MenuEntry& entry) { return desktopMenuText(entry, LongWords::areTorn); },
        .makeTextLine = [](QMenu& menu) { return new TextLineAction(&menu); },
    };
}

/// Where something of this length, wanted at `wanted`, begins between `first` and `last`.
int within(int first, int last, int wanted, int length) {
    return std::max(first, std::min(wanted, last - length + 1));
}

} // namespace

PopUpMenu::PopUpMenu(Kind kind, std::function<void(MenuEntryId)> choose)
    : m_kind(kind), m_menu(ownLook(), [this, choose = std::move(choose)](MenuEntryId id) {
          close();
          choose(id);
      }) {
    QMenu& menu = m_menu.menu();
    QObject::connect(&menu, &QMenu::aboutToHide, &menu, [this] {
        // A key closes it too.
        if (QGuiApplication::mouseButtons() != Qt::NoButton) {
            m_closingClick = QDeadlineTimer(QApplication::doubleClickInterval());
            m_closedAt = QCursor::pos();
        }
    });
}

PopUpMenu::~PopUpMenu() {
    // The window would lay itself out anew for each entry that goes before it.
    qDeleteAll(m_menu.menu().findChildren<QMenu*>(Qt::FindDirectChildrenOnly));
}

void PopUpMenu::open(const std::vector<MenuEntry>& entries) {
    m_menu.show(entries);
    if (m_kind == Kind::window) {
        openWindow();
    } else {
        openAtPointer();
    }
}

void PopUpMenu::openWindow() {
    m_menu.menu().setTitle(QCoreApplication::applicationName());
    m_menu.menu().showTearOffMenu();
}

void PopUpMenu::openAtPointer() {
    QMenu& menu = m_menu.menu();
    const QPoint pointer = QCursor::pos();
    menu.popup(pointer);
    m_opensUpwards = menu.geometry().center().y() < pointer.y();
}

void PopUpMenu::close() {
    m_menu.menu().hideTearOffMenu();
    m_menu.menu().hide();
    m_closingClick = QDeadlineTimer();
}

bool PopUpMenu::isOpen() {
    return m_menu.menu().isVisible() || m_menu.menu().isTearOffMenuVisible();
}

bool PopUpMenu::wasClosedByThisClick() const {
    const int distance = (QCursor::pos() - m_closedAt).manhattanLength();
    return !m_closingClick.hasExpired() && distance < QApplication::startDragDistance();
}

void PopUpMenu::show(const std::vector<MenuEntry>& entries) {
    QMenu& menu = m_menu.menu();
    if (m_kind == Kind::window) {
        return m_menu.show(entries);
    }
    const QRect before = menu.geometry();
    QAction* const pointedAt = menu.actionAt(menu.mapFromGlobal(QCursor::pos()));
    const int distanceBefore = menu.actionGeometry(pointedAt).top();
    m_menu.show(entries);
    QRect place(before.topLeft(), menu.sizeHint());
    if (pointedAt && pointedAt->isVisible()) {
        place.translate(0, distanceBefore - menu.actionGeometry(pointedAt).top());
    } else if (m_opensUpwards) {
        place.moveBottom(before.bottom());
    }
    // Some desktops let menus cover their panels.
    moveTo(place, menu.screen()->availableGeometry() | before);
}

void PopUpMenu::moveTo(const QRect& place, const QRect& room) {
    const QPoint corner(within(room.left(), room.right(), place.left(), place.width()),
                        within(room.top(), room.bottom(), place.top(), place.height()));
    if (place.height() > room.height()) {
        m_menu.menu().popup(corner); // which makes it scroll
    } else {
        m_menu.menu().setGeometry(QRect(corner, place.size()));
    }
}

} // namespace orvanta
