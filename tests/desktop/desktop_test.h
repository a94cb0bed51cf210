// SPDX-License-Identifier: MIT
#pragma once

#include "desktop/desktop_session.h"
#include "desktop/panel.h"
#include "desktop/person.h"
#include "desktop/screen.h"
#include "desktop/tray_item.h"
#include "desktop/tray_menu.h"
#include "desktop/waiting.h"
#include "integration/tray/tray_process.h"

#include <memory>
#include <optional>

namespace orvanta::tests {

/// The real tray on a desktop of its own: the display and the bus are there when a test begins,
/// panel and tray are the test's to start. Nothing of it is left when the test is over.
class DesktopTest : public TrayTest {
protected:
    DesktopTest();
    void SetUp() override;
    void TearDown() override;

    /// Panel, then tray; waits until the panel has the icon and the connector answers.
    void startEverything();
    /// The same, and waits until nothing is under way any more.
    void startAndSettle();
    void startTrayAsIcon() { startTray(QStringList()); }
    /// Waits until the panel knows the tray's icon.
    bool waitForItem();
    /// Anew, for instance after the bus has come back.
    void connectToBus();

    TrayMenu menu() const;
    /// What is to be seen in the menu from top to bottom; separators are "-".
    QStringList shownTexts() const;
    bool waitForToolTip(const QString& title);
    bool waitForEntry(const QString& text);
    /// Chooses the entry shown so over the bus, as a panel does; false when there is none.
    bool choose(const QString& text) const;

    /// Opens the menu and waits until it stands still; nothing when none came up.
    std::optional<QRect> openMenu(Person::Button button);
    bool isMenuOpen() const { return !screen->menus().isEmpty(); }
    QRect iconArea() const { return panel->iconArea(screen->picture()); }
    /// Writes a part of the screen to `name`.png in the directory named by ORVANTA_PICTURES, if
    /// there is that variable.
    void keepPicture(const QString& name, const QRect& part) const;

    /// How often this request reached the connectors ("POST /api/ov/pair/start").
    int requests(const QString& request) const;
    QByteArray trayErrors();
    /// All there is to say when a wait was in vain.
    std::string scene();

    DesktopSession session;
    std::unique_ptr<Panel> panel;
    std::unique_ptr<SessionBus> bus;
    std::unique_ptr<TrayItem> item;
    std::unique_ptr<Screen> screen;
    std::unique_ptr<Person> person;

private:
    QByteArray m_errors;
};

} // namespace orvanta::tests
