// SPDX-License-Identifier: MIT
#pragma once

#include "base/task.h"
#include "bench/install_stall/heartbeat.h"
#include "platform/platform.h"

#include <QString>

#include <map>
#include <vector>

namespace orvanta::bench {

/// The stalls of each phase, one entry per run.
using Measurements = std::map<QString, std::vector<Stalls>>;

/// Takes a new store at `stateRoot` through its life: idle for a second, seeded with the runtime at
/// `resourceRoot`, two installations of what `baseUrl` offers, the second of which lets a version
/// be pruned. Throws `PlatformError` when a step does not succeed.
Task<> exerciseStore(QString resourceRoot, QString stateRoot, QString baseUrl, Platform& platform,
                     Heartbeat& heartbeat, Measurements& measurements);

} // namespace orvanta::bench
