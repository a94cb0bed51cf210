// SPDX-License-Identifier: MIT
#pragma once

#include "app/entry_menu.h"
#include "app/pop_up_menu.h"
#include "app/tray_icon.h"

#include <QIcon>
#include <QSystemTrayIcon>

#include <functional>
#include <map>
#include <memory>
#include <optional>

namespace orvanta {

class TrayHost;

/// The toolkit's icon. Needs a QApplication, and a host from the moment it is made: the toolkit
/// decides then, once for the whole process, how icons reach the desktop.
class SystemTrayIcon : public TrayIcon {
public:
    /// `host` outlives this object. `choose` is called with what the user chose from the menu.
    SystemTrayIcon(const TrayHost& host, std::function<void(MenuEntryId)> choose);

    void showState(ConnectorMenuState state) override;
    void show(ConnectorMenuState state, const std::vector<MenuEntry>& entries) override;

private:
    void handleActivated(QSystemTrayIcon::ActivationReason reason);
    void openOrCloseMenu();
    void updateIcon(ConnectorMenuState state);

    const TrayHost& m_host;
    std::function<void(MenuEntryId)> m_choose;
    EntryMenu m_hostMenu;                   ///< drawn by the host
    std::unique_ptr<PopUpMenu> m_popUpMenu; ///< drawn by us, the one opened last
    std::optional<ConnectorMenuState> m_state;
    std::map<ConnectorMenuState, QIcon> m_pictures; ///< of the states seen, 100 kB each
    std::vector<MenuEntry> m_entries;
    QSystemTrayIcon m_icon;
};

} // namespace orvanta
