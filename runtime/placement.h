// SPDX-License-Identifier: MIT
#pragma once

#include "runtime/mac_runtime_updater.h"

namespace orvanta {

/// For the time from the making of a version directory to the record that names it, if one does: a
/// status poll may confirm the running version in between, and would prune the new one. Made only
/// after `awaitTurnToPlace`.
class MacRuntimeUpdater::Placement {
public:
    /// `updater` outlives this object.
    Placement(MacRuntimeUpdater& updater, const QString& version);
    ~Placement();
    Placement(const Placement&) = delete;
    Placement& operator=(const Placement&) = delete;

private:
    MacRuntimeUpdater& m_updater;
    QString m_name;
};

} // namespace orvanta
