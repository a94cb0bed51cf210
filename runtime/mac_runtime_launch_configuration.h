// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <optional>

namespace orvanta {

/// What the launcher starts: one complete runtime. Paths are absolute, without a trailing slash.
struct MacRuntimeLaunchConfiguration {
    /// The directory of `server.js`; also the child's working directory.
    QString localServerRoot;
    /// The `node` executable.
    QString nodeBinaryURL;
    /// The store version; nothing for the shipped runtime.
    std::optional<QString> version;
    /// True for the runtime shipped inside the application.
    bool isLegacy = false;

    bool operator==(const MacRuntimeLaunchConfiguration&) const = default;
};

} // namespace orvanta
