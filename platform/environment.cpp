// SPDX-License-Identifier: MIT
#include "platform/environment.h"

#include <algorithm>

namespace orvanta {

void EnvironmentVariables::set(const QByteArray& name, const QByteArray& value) {
    const auto named = [&name](const Variable& variable) { return variable.first == name; };
    const auto found = std::find_if(m_variables.begin(), m_variables.end(), named);
    if (found != m_variables.end()) {
        found->second = value;
    } else {
        m_variables.emplace_back(name, value);
    }
}

std::optional<QByteArray> EnvironmentVariables::value(const QByteArray& name) const {
    for (const auto& variable : m_variables) {
        if (variable.first == name) {
            return variable.second;
        }
    }
    return std::nullopt;
}

} // namespace orvanta
