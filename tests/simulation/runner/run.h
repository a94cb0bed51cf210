// SPDX-License-Identifier: MIT
#pragma once

#include "simulation/model/verdict.h"
#include "simulation/script/script.h"

#include <cstdint>
#include <optional>

namespace orvanta::simulation {

/// What came of a script.
struct Outcome {
    std::optional<Violation> violation;
    std::uint64_t fingerprint = 0;
    Moment length = 0;
};

/// Plays `script` from its beginning in a new world, up to its end or the first violation.
Outcome run(const Script& script, bool isTalking = false);

} // namespace orvanta::simulation
