// SPDX-License-Identifier: MIT
#pragma once

#include "app/entry_menu.h"

#include <QDeadlineTimer>
#include <QPoint>
#include <QRect>

#include <functional>
#include <vector>

namespace orvanta {

/// The menu that we draw ourselves, once opened until it closes; opened at most once. Needs a
/// QApplication.
class PopUpMenu {
public:
    enum class Kind {
        atPointer, ///< a menu like any other
        window,    ///< for desktops that let nobody place a menu beside a panel: stays until the
                   ///< choice or `close`
    };

    /// `choose` is called with what the user chose, after the menu has closed.
    PopUpMenu(Kind kind, std::function<void(MenuEntryId)> choose);
    PopUpMenu(const PopUpMenu&) = delete;
    PopUpMenu& operator=(const PopUpMenu&) = delete;
    ~PopUpMenu();

    void open(const std::vector<MenuEntry>& entries);
    void close();
    bool isOpen();

    /// Whether the click told of now is the one that has closed the menu: panels learn of its end.
    bool wasClosedByThisClick() const;

    /// To be called while it is open. What is under the pointer stays there as far as the screen
    /// has room, and the menu stays on the screen.
    void show(const std::vector<MenuEntry>& entries);

private:
    void openWindow();
    void openAtPointer();
    void moveTo(const QRect& place, const QRect& room);

    const Kind m_kind;
    QDeadlineTimer m_closingClick; ///< runs for as long as one may take
    QPoint m_closedAt;             ///< where the pointer was
    EntryMenu m_menu;
    bool m_opensUpwards = false;
};

} // namespace orvanta
