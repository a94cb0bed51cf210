// SPDX-License-Identifier: MIT
#pragma once

#include "app/menu_entries.h"

#include <QMenu>

#include <functional>
#include <vector>

namespace orvanta {

/// The entries as a menu of the toolkit. It has one action for each entry for all its life, hidden
/// ones included: a host lays a menu out anew, or closes it, when actions come and go.
class EntryMenu {
public:
    struct Look {
        /// The entry's text in the writing that whoever draws the menu expects.
        std::function<QString(const MenuEntry&)> text;
        /// Makes the action of a line that cannot be chosen; `menu` owns it.
        std::function<QAction*(QMenu& menu)> makeTextLine;
    };

    /// `choose` is called with what the user chose.
    EntryMenu(Look look, std::function<void(MenuEntryId)> choose);
    EntryMenu(const EntryMenu&) = delete;
    EntryMenu& operator=(const EntryMenu&) = delete;

    /// Changes what differs from the entries shown before, and nothing else. Always the same
    /// entries in the same order.
    void show(const std::vector<MenuEntry>& entries);

    QMenu& menu() { return m_menu; }

private:
    void addAction(const MenuEntry& entry);
    void handleTriggered(MenuEntryId id);
    void restoreMarks();
    void update(QAction& action, const MenuEntry& entry);

    Look m_look;
    std::function<void(MenuEntryId)> m_choose;
    QMenu m_menu;
    std::vector<MenuEntry> m_entries; ///< as shown
};

} // namespace orvanta
