// SPDX-License-Identifier: MIT
#include "app/tray_front_end.h"

#include "app/orvanta_menu_bar_view.h"
#include "platform/main_queue.h"
#include "platform/tray_host.h"

namespace orvanta {
namespace {

/// Panels of a session that has just begun take a while.
constexpr Seconds kPatience{10};

} // namespace

TrayFrontEnd::TrayFrontEnd(OrvantaMenuBarView& view, TrayHost& host, MainQueue& queue,
                           IconFactory makeIcon, Complaint complain)
    : m_view(view), m_host(host), m_makeIcon(std::move(makeIcon)), m_complain(std::move(complain)),
      m_self(std::make_shared<TrayFrontEnd*>(this)) {
    const auto calling = [this](void (TrayFrontEnd::*member)()) {
        return [weak = std::weak_ptr(m_self), member] {
            if (const auto self = weak.lock()) {
                (*self->*member)();
            }
        };
    };
    m_view.onChange(calling(&TrayFrontEnd::draw), calling(&TrayFrontEnd::drawIcon));
    m_host.watch([weak = std::weak_ptr(m_self)](TrayHost::Event event) {
        const auto self = weak.lock();
        if (!self) {
            return;
        }
        if (event == TrayHost::Event::appeared) {
            (*self)->handleAppeared();
        } else {
            (*self)->m_icon.reset();
        }
    });
    queue.after(kPatience, [weak = std::weak_ptr(m_self)] {
        if (const auto self = weak.lock()) {
            (*self)->complainWithoutHost();
        }
    });
}

void TrayFrontEnd::handleAppeared() {
    m_hasSeenHost = true;
    m_icon = m_makeIcon();
    draw();
}

void TrayFrontEnd::draw() {
    if (m_icon) {
        m_icon->show(m_view.menuState(), m_view.entries());
    }
}

void TrayFrontEnd::drawIcon() {
    if (m_icon) {
        m_icon->showState(m_view.menuState());
    }
}

void TrayFrontEnd::complainWithoutHost() {
    if (!m_hasSeenHost) {
        m_complain(m_host.hint());
    }
}

} // namespace orvanta
