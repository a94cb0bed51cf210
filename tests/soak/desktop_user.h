// SPDX-License-Identifier: MIT
#pragma once

#include "desktop/desktop_session.h"
#include "desktop/panel.h"
#include "desktop/session_bus.h"
#include "desktop/tray_item.h"
#include "desktop/tray_menu.h"
#include "soak/user.h"

#include <QElapsedTimer>

#include <memory>

namespace orvanta::soak {

/// Has a panel with the tray's icon, and uses its menu over the bus as the panel does.
class DesktopUser : public User {
public:
    QProcessEnvironment prepare(const QString& home,
                                const QProcessEnvironment& environment) override;
    QStringList arguments() const override { return {}; }
    void watch(QProcess& tray) override;
    void look() override;
    QString said(const QString& heading) const override;
    bool canChoose(const QString& entry) const override;
    void choose(const QString& entry) override;
    /// The panel crashes and comes back, and the icon with it.
    void disturb() override;
    QString scene() const override;

private:
    void findIcon();
    tests::TrayMenu menu() const;

    std::unique_ptr<tests::DesktopSession> m_session;
    std::unique_ptr<tests::Panel> m_panel;
    std::unique_ptr<tests::SessionBus> m_bus;
    std::unique_ptr<tests::TrayItem> m_icon;
    QProcess* m_tray = nullptr;
    QString m_menuPath;
    QList<tests::TrayMenu::Entry> m_entries;
    QElapsedTimer m_sinceLook;
};

} // namespace orvanta::soak
