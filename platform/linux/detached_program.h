// SPDX-License-Identifier: MIT
#pragma once

#include "platform/environment.h"

#include <QByteArrayList>

#include <optional>
#include <sys/types.h>

namespace orvanta {

/// Starts `command` (the program's path, then its arguments) in a session of its own with
/// /dev/null as its standard streams, no other descriptor, no blocked and no ignored signal, and
/// exactly `variables` as its environment. Nothing when the system refuses. The caller reaps it.
std::optional<pid_t> startDetached(const QByteArrayList& command,
                                   const EnvironmentVariables& variables);

} // namespace orvanta
