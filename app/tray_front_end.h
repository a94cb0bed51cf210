// SPDX-License-Identifier: MIT
#pragma once

#include "app/tray_icon.h"

#include <functional>
#include <memory>

namespace orvanta {

class MainQueue;
class OrvantaMenuBarView;
class TrayHost;

/// The menu behind an icon on the desktop: has the icon made whenever there is a host for it and
/// keeps it in step with the menu. Where no host appears in the first ten seconds, the user is
/// told once; the icon comes all the same when one does.
class TrayFrontEnd {
public:
    using IconFactory = std::function<std::unique_ptr<TrayIcon>()>;
    using Complaint = std::function<void(const QString&)>;

    /// What is given outlives this object. Starts watching `host`.
    TrayFrontEnd(OrvantaMenuBarView& view, TrayHost& host, MainQueue& queue, IconFactory makeIcon,
                 Complaint complain);
    TrayFrontEnd(const TrayFrontEnd&) = delete;
    TrayFrontEnd& operator=(const TrayFrontEnd&) = delete;

private:
    void handleAppeared();
    void draw();
    void drawIcon();
    void complainWithoutHost();

    OrvantaMenuBarView& m_view;
    TrayHost& m_host;
    IconFactory m_makeIcon;
    Complaint m_complain;
    bool m_hasSeenHost = false;
    std::unique_ptr<TrayIcon> m_icon;
    std::shared_ptr<TrayFrontEnd*> m_self; ///< what calls back later holds it weakly
};

} // namespace orvanta
