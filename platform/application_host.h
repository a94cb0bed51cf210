// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>

namespace orvanta {

/// The application as the desktop sees it. Main thread only.
class ApplicationHost {
public:
    using ObserverToken = std::uint64_t;

    virtual ~ApplicationHost() = default;

    /// No Dock icon, no application menu, where the desktop has such things.
    virtual void becomeAccessory() = 0;

    /// `observer` is called inside the end of the application, whoever asked for it (a signal, the
    /// desktop session, `terminate`). Its return lets the application go.
    virtual ObserverToken addWillTerminateObserver(std::function<void()> observer) = 0;
    virtual void removeObserver(ObserverToken token) = 0;

    /// Ends the application: calls the observers, then leaves the main loop.
    virtual void terminate() = 0;
};

} // namespace orvanta
