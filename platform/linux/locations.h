// SPDX-License-Identifier: MIT
#pragma once

#include "platform/environment.h"
#include "platform/locations.h"

namespace orvanta {

/// Where things are on Linux: the resources in "../share/orvanta" of the executable's folder, the
/// user's data in $XDG_DATA_HOME or "~/.local/share".
class LinuxLocations : public Locations {
public:
    /// `executable` is absolute and free of links. Throws `PlatformError` when the user's home
    /// cannot be found.
    LinuxLocations(const Environment& environment, const QString& executable);

    QString resourceRoot() const override { return m_resourceRoot; }
    QString applicationSupport() const override { return m_applicationSupport; }

private:
    QString m_resourceRoot;
    QString m_applicationSupport;
};

} // namespace orvanta
