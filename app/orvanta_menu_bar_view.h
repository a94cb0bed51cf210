// SPDX-License-Identifier: MIT
#pragma once

#include "app/menu_entries.h"
#include "app/menu_source.h"

#include <functional>
#include <memory>
#include <vector>

namespace orvanta {

class ApplicationHost;
class MainQueue;

/// The content of the menu, for any front end: computes the entries from the manager's properties
/// and turns a chosen entry into one call of the manager. Keeps nothing of its own between two
/// calls. Main thread only; `queue` and `application` outlive it.
class OrvantaMenuBarView {
public:
    OrvantaMenuBarView(const std::shared_ptr<DesktopConnectorManager>& manager, MainQueue& queue,
                       ApplicationHost& application);
    OrvantaMenuBarView(MenuSource source, MainQueue& queue, ApplicationHost& application);
    OrvantaMenuBarView(const OrvantaMenuBarView&) = delete;
    OrvantaMenuBarView& operator=(const OrvantaMenuBarView&) = delete;

    /// The entries as they stand now.
    std::vector<MenuEntry> entries() const;

    /// What the icon shows now.
    ConnectorMenuState menuState() const;

    /// The user chose `id`. Never waits: asynchronous commands start on the next turn of the loop
    /// as tasks of their own. An entry that is disabled now or cannot be chosen does nothing.
    void activate(MenuEntryId id);

    /// Calls `redraw` after properties changed, once for a burst of changes, and not any more once
    /// this view is gone: on a later turn of the loop, or as soon as they have settled, and then
    /// once more for what changes after that. With `redrawIcon`, that alone is called when they
    /// have settled, and `redraw` on a later turn in any case: most people see no more than the
    /// icon. For one front end.
    void onChange(std::function<void()> redraw, std::function<void()> redrawIcon = {});

private:
    struct Observer {
        std::function<void()> redraw;
        std::function<void()> redrawIcon;
        bool isDue = false;

        void draw();
        void drawSettled();
    };

    void run(MenuEntryId id);
    void quit();

    MenuSource m_source;
    MainQueue& m_queue;
    ApplicationHost& m_application;
    std::shared_ptr<Observer> m_observer;
};

} // namespace orvanta
