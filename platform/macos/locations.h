// SPDX-License-Identifier: MIT
#pragma once

#include "platform/environment.h"
#include "platform/locations.h"

namespace orvanta {

/// Where things are on macOS: the resources in the bundle, the user's data in
/// "~/Library/Application Support".
class MacLocations : public Locations {
public:
    /// Throws `PlatformError` when the executable or the user's home cannot be found.
    explicit MacLocations(const Environment& environment);

    QString resourceRoot() const override { return m_resourceRoot; }
    QString applicationSupport() const override { return m_applicationSupport; }

private:
    QString m_resourceRoot;
    QString m_applicationSupport;
};

} // namespace orvanta
