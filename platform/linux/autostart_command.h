// SPDX-License-Identifier: MIT
#pragma once

#include "platform/environment.h"

#include <QByteArray>
#include <QByteArrayList>

namespace orvanta {

/// Whether the command of an entry runs the file `program`, by this or another of its names: as
/// such, or by way of other programs (env A=b PROGRAM, sh -c "sleep 5; PROGRAM"). A script that
/// runs it is not looked into.
bool runsProgram(const QByteArrayList& command, const QByteArray& program,
                 const EnvironmentVariables& variables);

} // namespace orvanta
