// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace orvanta {

/// Where this application's files are. Absolute paths without a trailing slash; they exist or are
/// known to be creatable before the logic is built.
class Locations {
public:
    virtual ~Locations() = default;

    /// The directory that holds the shipped `local-server` and `node-runtime`.
    virtual QString resourceRoot() const = 0;

    /// The user's directory for application data, the parent of the state root.
    virtual QString applicationSupport() const = 0;
};

} // namespace orvanta
