// SPDX-License-Identifier: MIT
#include "platform/posix/process_environment.h"

extern "C" char** environ;

namespace orvanta {
namespace {

EnvironmentVariables capture() {
    std::vector<EnvironmentVariables::Variable> variables;
    for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) {
        const QByteArray assignment(*entry);
        const auto separator = assignment.indexOf('=');
        if (separator >= 0) {
            variables.emplace_back(assignment.left(separator), assignment.mid(separator + 1));
        }
    }
    return EnvironmentVariables(std::move(variables));
}

} // namespace

ProcessEnvironment::ProcessEnvironment() : m_variables(capture()) {}

} // namespace orvanta
