// SPDX-License-Identifier: MIT
#include "app/orvanta_menu_bar_view.h"

#include "platform/application_host.h"
#include "platform/main_queue.h"

#include <algorithm>
#include <thread>
#include <utility>

namespace orvanta {

OrvantaMenuBarView::OrvantaMenuBarView(const std::shared_ptr<DesktopConnectorManager>& manager,
                                       MainQueue& queue, ApplicationHost& application)
    : OrvantaMenuBarView(menuSource(manager), queue, application) {}

OrvantaMenuBarView::OrvantaMenuBarView(MenuSource source, MainQueue& queue,
                                       ApplicationHost& application)
    : m_source(std::move(source)), m_queue(queue), m_application(application) {}

std::vector<MenuEntry> OrvantaMenuBarView::entries() const {
    return menuEntries(m_source.snapshot());
}

ConnectorMenuState OrvantaMenuBarView::menuState() const {
    return m_source.snapshot().menuState;
}

void OrvantaMenuBarView::activate(MenuEntryId id) {
    const std::vector<MenuEntry> now = entries();
    const bool canRun = std::any_of(now.begin(), now.end(), [id](const MenuEntry& entry) {
        return entry.id == id && entry.isVisible && entry.isEnabled;
    });
    if (canRun) {
        run(id);
    }
}

void OrvantaMenuBarView::run(MenuEntryId id) {
    switch (id) {
    case MenuEntryId::openDashboard:
        return m_source.openDashboard();
    case MenuEntryId::signIn:
        return startTask(m_queue, m_source.startPairing);
    case MenuEntryId::signOut:
        return startTask(m_queue, m_source.signOut);
    case MenuEntryId::restart:
        return startTask(m_queue, m_source.restartServer);
    case MenuEntryId::checkForUpdates:
        return startTask(m_queue, m_source.checkRuntimeUpdates);
    case MenuEntryId::applyUpdate:
        return startTask(m_queue, m_source.applyRuntimeUpdate);
    case MenuEntryId::rollback:
        return startTask(m_queue, m_source.rollbackRuntime);
    case MenuEntryId::launchAtLogin:
        return m_source.setLaunchAtLogin(!m_source.snapshot().launchAtLoginEnabled);
    case MenuEntryId::quit:
        return quit();
    case MenuEntryId::status:
    case MenuEntryId::workspace:
    case MenuEntryId::lastError:
    case MenuEntryId::statusSeparator:
    case MenuEntryId::commandSeparator:
    case MenuEntryId::runtimeStatus:
    case MenuEntryId::runtimeSeparator:
        return;
    }
}

void OrvantaMenuBarView::quit() {
    m_source.handleApplicationTermination();
    m_application.terminate();
}

void OrvantaMenuBarView::onChange(std::function<void()> redraw, std::function<void()> redrawIcon) {
    m_observer = std::make_shared<Observer>();
    m_observer->redraw = std::move(redraw);
    m_observer->redrawIcon = std::move(redrawIcon);
    const auto noteChange = [weak = std::weak_ptr(m_observer), &queue = m_queue] {
        const auto observer = weak.lock();
        if (observer && !std::exchange(observer->isDue, true)) {
            queue.post([weak] {
                if (const auto later = weak.lock()) {
                    later->draw();
                }
            });
        }
    };
    const auto noteSettled = [weak = std::weak_ptr(m_observer)] {
        const auto observer = weak.lock();
        if (observer && observer->isDue) {
            observer->drawSettled();
        }
    };
    m_source.observeChanges(noteChange, noteSettled);
}

void OrvantaMenuBarView::Observer::draw() {
    if (std::exchange(isDue, false)) {
        redraw();
    }
}

void OrvantaMenuBarView::Observer::drawSettled() {
    if (redrawIcon) {
        redrawIcon();
    } else {
        draw();
    }
    // What shows it may share this processor, and what follows is nothing to see.
    std::this_thread::yield();
}

} // namespace orvanta
