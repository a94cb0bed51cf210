// SPDX-License-Identifier: MIT
#pragma once

#include "desktop/session_bus.h"

#include <QList>

namespace orvanta::tests {

/// The menu of a status icon as it travels to the panel.
class TrayMenu {
public:
    struct Entry {
        int id = 0;
        QString label; ///< as sent, with the marks of mnemonics
        bool isSeparator = false;
        bool isEnabled = true;
        bool isVisible = true;
        bool isToggle = false;
        bool isChecked = false;

        /// The label as a panel shows it: a single "_" marks the mnemonic and is not seen, two
        /// are one. Marks that take no room are left out.
        QString shownText() const;
        bool operator==(const Entry&) const = default;
    };

    /// `bus` outlives this object.
    TrayMenu(const SessionBus& bus, const QString& service, const QString& path);

    /// All entries from top to bottom, hidden ones included; empty when there was no answer.
    QList<Entry> entries() const;
    /// The entry shown so; its id is 0 when there is none.
    Entry entry(const QString& shownText) const;
    /// As a panel does when the user chooses it; false when there was no answer.
    bool choose(int id) const;

private:
    const SessionBus& m_bus;
    SessionBus::Object m_menu;
};

} // namespace orvanta::tests
