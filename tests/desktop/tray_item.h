// SPDX-License-Identifier: MIT
#pragma once

#include "desktop/session_bus.h"

#include <QImage>
#include <QMap>

namespace orvanta::tests {

/// What a panel is told about a status icon.
class TrayItem {
public:
    /// `bus` outlives this object.
    explicit TrayItem(const SessionBus& bus) : m_bus(bus) {}

    /// Finds the item of the process `pid` among those that the panel knows; to be called again
    /// after a new registration. False without one.
    bool find(pid_t pid);
    /// How many items the panel knows.
    int registeredCount() const { return static_cast<int>(registered().size()); }

    /// The sender of everything the item says on the bus.
    QString uniqueName() const { return m_item.service; }
    QString text(const QString& property) const; ///< "Title", "Status", "Category", "Id"
    QString toolTipTitle() const;
    /// The icon's pictures by their width.
    QMap<int, QImage> pictures() const;
    QString menuPath() const;
    /// As panels do before the click itself; false when there was no answer.
    bool announceClick(const QString& activationToken) const;
    /// The click itself, as panels hand it on; false when there was no answer.
    bool activate() const;
    /// The click that is to bring the menu, from a panel that does not draw menus itself; false
    /// when there was no answer.
    bool askForMenu() const;

private:
    QStringList registered() const;

    const SessionBus& m_bus;
    SessionBus::Object m_item;
};

} // namespace orvanta::tests
