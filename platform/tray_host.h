// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <functional>

namespace orvanta {

/// The part of the desktop that shows icons and their menus: a panel, a bar, the menu bar. It may
/// come late, go and come back. Main thread only.
class TrayHost {
public:
    enum class Event {
        appeared, ///< an icon made from now on is shown, also by hosts that replace this one
        lost,     ///< icons made so far are dead; `appeared` follows if the desktop comes back
    };

    virtual ~TrayHost() = default;

    /// Starts watching; `observer` is called on later turns of the loop, first with `appeared`,
    /// then by turns, until this object is gone. To be called once.
    virtual void watch(std::function<void(Event)> observer) = 0;

    /// One line for a person who sees no icon: what is missing and what to do.
    virtual QString hint() const = 0;

    /// `text` in the writing that makes the host's menu show it as it is.
    virtual QString menuText(const QString& text) const = 0;

    /// Whether a click on the icon opens the menu without our doing.
    virtual bool opensMenuOnClick() const = 0;
};

} // namespace orvanta
