// SPDX-License-Identifier: MIT
#pragma once

#include "platform/environment.h"

namespace orvanta {

/// The environment as it stands when this object is made, which is to be the first thing in main:
/// toolkits set variables for themselves that no child of ours shall see.
class ProcessEnvironment : public Environment {
public:
    /// Bytes and order as they are. Entries that are no assignment are left out.
    ProcessEnvironment();

    const EnvironmentVariables& variables() const override { return m_variables; }

private:
    EnvironmentVariables m_variables;
};

} // namespace orvanta
