// SPDX-License-Identifier: MIT
#pragma once

#include "simulation/runner/run.h"

namespace orvanta::simulation {

/// A script with as few events and as little time as possible that still breaks the same rule.
Script shrunk(const Script& script, const Violation& violation);

} // namespace orvanta::simulation
