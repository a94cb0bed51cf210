// SPDX-License-Identifier: MIT
#pragma once

namespace orvanta {

/// The entry that starts this application when the user logs in.
class LoginItem {
public:
    virtual ~LoginItem() = default;

    /// True only when the desktop will really start the application: an entry that waits for the
    /// user's approval counts as off.
    virtual bool isEnabled() const = 0;

    /// Both throw `PlatformError` with a reason a person understands.
    virtual void registerItem() = 0;
    virtual void unregisterItem() = 0;
};

} // namespace orvanta
