// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <optional>

namespace orvanta {

class EnvironmentVariables;

/// The session's own directory: $XDG_RUNTIME_DIR, when it is an absolute path to a directory.
std::optional<QString> sessionDirectory(const EnvironmentVariables& variables);

/// Where to keep what means nothing after the next start of the system: the session's directory,
/// else a private one of `stateRoot`'s among the temporary files, made when it is missing. Nothing
/// when that cannot be had or is not this user's alone.
std::optional<QString> runTimeDirectory(const EnvironmentVariables& variables,
                                        const QString& stateRoot);

} // namespace orvanta
