// SPDX-License-Identifier: MIT
#include "app/system_tray_icon.h"

#include "app/desktop_menu_text.h"
#include "app/icons/menu_bar_icons.h"
#include "app/menu_bar_label.h"
#include "platform/tray_host.h"

#include <QGuiApplication>

#include <utility>

namespace orvanta {
namespace {

EntryMenu::Look hostLook(const TrayHost& host) {
    return {
        .text =
            [&host](const MenuEntry& entry) {
                return host.menuText(desktopMenuText(entry, LongWords::stayWhole));
            },
        .makeTextLine = [](QMenu& menu) { return new QAction(&menu); },
    };
}

/// Wayland shows menus only beside a window of the same application, and we have none. An X server
/// that runs inside it does not know where the pointer is, nor where it clicks.
PopUpMenu::Kind popUpKind() {
    const bool isWayland = QGuiApplication::platformName().startsWith(QLatin1String("wayland")) ||
                           !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
    return isWayland ? PopUpMenu::Kind::window : PopUpMenu::Kind::atPointer;
}

} // namespace

SystemTrayIcon::SystemTrayIcon(const TrayHost& host, std::function<void(MenuEntryId)> choose)
    : m_host(host), m_choose(std::move(choose)), m_hostMenu(hostLook(host), m_choose) {
    QObject::connect(&m_icon, &QSystemTrayIcon::activated, &m_icon,
                     [this](QSystemTrayIcon::ActivationReason reason) { handleActivated(reason); });
}

void SystemTrayIcon::showState(ConnectorMenuState state) {
    if (std::exchange(m_state, state) != state) {
        updateIcon(state);
    }
}

void SystemTrayIcon::show(ConnectorMenuState state, const std::vector<MenuEntry>& entries) {
    m_entries = entries;
    showState(state);
    m_hostMenu.show(entries);
    if (m_popUpMenu && m_popUpMenu->isOpen()) {
        m_popUpMenu->show(entries);
    }
    if (!m_icon.isVisible()) {
        // The toolkit announces every action that comes to a menu which it has handed out.
        m_icon.setContextMenu(&m_hostMenu.menu());
        m_icon.show();
    }
}

void SystemTrayIcon::updateIcon(ConnectorMenuState state) {
    auto picture = m_pictures.find(state);
    if (picture == m_pictures.end()) {
        picture = m_pictures.emplace(state, menuBarIcon(state)).first;
    }
    m_icon.setIcon(picture->second);
    m_icon.setToolTip(menuBarAccessibilityLabel(state));
}

void SystemTrayIcon::handleActivated(QSystemTrayIcon::ActivationReason reason) {
    const bool isClick = reason == QSystemTrayIcon::Trigger || reason == QSystemTrayIcon::Context;
    if (isClick && !m_host.opensMenuOnClick()) {
        openOrCloseMenu();
    }
}

void SystemTrayIcon::openOrCloseMenu() {
    if (m_popUpMenu && m_popUpMenu->isOpen()) {
        return m_popUpMenu->close();
    }
    if (m_popUpMenu && m_popUpMenu->wasClosedByThisClick()) {
        return;
    }
    m_popUpMenu = std::make_unique<PopUpMenu>(popUpKind(), m_choose);
    m_popUpMenu->open(m_entries);
}

} // namespace orvanta
