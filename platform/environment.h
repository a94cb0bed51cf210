// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

#include <optional>
#include <utility>
#include <vector>

namespace orvanta {

/// The variables of a process, as bytes and in their order.
class EnvironmentVariables {
public:
    using Variable = std::pair<QByteArray, QByteArray>;

    EnvironmentVariables() = default;
    explicit EnvironmentVariables(std::vector<Variable> variables)
        : m_variables(std::move(variables)) {}

    /// Overwrites the variable where it stands, or appends it.
    void set(const QByteArray& name, const QByteArray& value);
    std::optional<QByteArray> value(const QByteArray& name) const;
    const std::vector<Variable>& all() const { return m_variables; }

private:
    std::vector<Variable> m_variables;
};

/// The environment that this process was started with. What a toolkit or library sets in the
/// process later is not seen here.
class Environment {
public:
    virtual ~Environment() = default;
    virtual const EnvironmentVariables& variables() const = 0;
};

} // namespace orvanta
