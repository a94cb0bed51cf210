// SPDX-License-Identifier: MIT
#pragma once

#include "platform/environment.h"

#include <QByteArray>

#include <optional>

namespace orvanta {

/// Where the program `name` is: an absolute path as it stands, a bare name in the first absolute
/// directory of PATH that has it. Nothing unless that is a file which this user may execute.
std::optional<QByteArray> findProgram(const EnvironmentVariables& variables,
                                      const QByteArray& name);

} // namespace orvanta
