// SPDX-License-Identifier: MIT
#pragma once

#include "simulation/world/moment.h"

#include <optional>
#include <string>

namespace orvanta::simulation {

/// What was not as required.
struct Violation {
    Moment at = 0;
    std::string rule;
    std::string detail;
};

/// The first violation of a run.
class Verdict {
public:
    void fail(Moment at, const std::string& rule, const std::string& detail = {}) {
        if (!m_violation) {
            m_violation = {at, rule, detail};
        }
    }
    const std::optional<Violation>& violation() const { return m_violation; }

private:
    std::optional<Violation> m_violation;
};

} // namespace orvanta::simulation
