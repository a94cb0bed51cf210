// SPDX-License-Identifier: MIT
#pragma once

#include "platform/environment.h"

#include <initializer_list>
#include <vector>

namespace orvanta {

/// An environment with the variables that a test wants.
class SomeEnvironment : public Environment {
public:
    SomeEnvironment(std::initializer_list<EnvironmentVariables::Variable> variables)
        : m_variables(std::vector(variables)) {}

    const EnvironmentVariables& variables() const override { return m_variables; }

private:
    EnvironmentVariables m_variables;
};

} // namespace orvanta
