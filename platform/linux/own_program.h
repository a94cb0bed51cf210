// SPDX-License-Identifier: MIT
#pragma once

#include "platform/environment.h"

#include <QByteArray>
#include <QString>

namespace orvanta {

/// The absolute path to start this program by again: the one it was started by as `invokedAs`, the
/// first of its arguments, tells, as long as that leads to `file`, the program itself; else `file`.
/// A link to the program of today may lead to its successor tomorrow.
QString ownProgram(const EnvironmentVariables& variables, const QByteArray& invokedAs,
                   const QString& file);

} // namespace orvanta
