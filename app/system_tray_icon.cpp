// SPDX-License-Identifier: MIT
#include "app/system_tray_icon.h"

#include "app/desktop_menu_text.h"
#include "app/icons/menu_bar_icons.h"
#include "app/menu_bar_label.h"
#include "app/text_line_action.h"
#include "platform/tray_host.h"

#include <QCursor>
#include <QGuiApplication>

namespace orvanta {
namespace {

EntryMenu::Look hostLook(const TrayHost& host) {
    return {
        .text = [&host](const MenuEntry& entry) { return host.menuText(desktopMenuText(entry)); },
        .makeTextLine = [](QMenu& menu) { return new QAction(&menu); },
    };
}

EntryMenu::Look ownLook() {
    return {
        .text = desktopMenuText,
        .makeTextLine = [](QMenu& menu) { return new TextLineAction(&menu); },
    };
}

/// Wayland shows menus only beside a window of the same application, and we have none.
bool canPlaceMenus() {
    return !QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
}

bool isOpen(EntryMenu& menu) {
    return menu.menu().isVisible() || menu.menu().isTearOffMenuVisible();
}

} // namespace

SystemTrayIcon::SystemTrayIcon(const TrayHost& host, std::function<void(MenuEntryId)> choose)
    : m_host(host), m_choose(std::move(choose)), m_hostMenu(hostLook(host), m_choose) {
    m_icon.setContextMenu(&m_hostMenu.menu());
    QObject::connect(&m_icon, &QSystemTrayIcon::activated, &m_icon,
                     [this](QSystemTrayIcon::ActivationReason reason) { handleActivated(reason); });
}

void SystemTrayIcon::show(ConnectorMenuState state, const std::vector<MenuEntry>& entries) {
    m_entries = entries;
    m_hostMenu.show(entries);
    if (m_popUpMenu && isOpen(*m_popUpMenu)) {
        m_popUpMenu->show(entries);
    } else {
        m_popUpMenu.reset();
    }
    if (state != m_state) {
        m_state = state;
        updateIcon(state);
    }
}

void SystemTrayIcon::updateIcon(ConnectorMenuState state) {
    m_icon.setIcon(menuBarIcon(state));
    m_icon.setToolTip(menuBarAccessibilityLabel(state));
    m_icon.show();
}

void SystemTrayIcon::handleActivated(QSystemTrayIcon::ActivationReason reason) {
    const bool isClick = reason == QSystemTrayIcon::Trigger || reason == QSystemTrayIcon::Context;
    if (isClick && !m_host.opensMenuOnClick()) {
        popUp();
    }
}

void SystemTrayIcon::popUp() {
    m_popUpMenu = std::make_unique<EntryMenu>(ownLook(), [this](MenuEntryId id) {
        m_popUpMenu->menu().hideTearOffMenu();
        m_choose(id);
    });
    m_popUpMenu->show(m_entries);
    QMenu& menu = m_popUpMenu->menu();
    if (canPlaceMenus()) {
        menu.popup(QCursor::pos());
        return;
    }
    menu.setWindowTitle(QCoreApplication::applicationName());
    menu.showTearOffMenu();
}

} // namespace orvanta
