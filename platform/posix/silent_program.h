// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

namespace orvanta {

/// Runs a program to its end, on any thread, and returns its exit status, or 128 and the signal
/// that ended it. It reads nothing, what it prints is dropped, it has no terminal to ask at, and of
/// the environment it gets only a locale whose names are UTF-8. Throws `PlatformError` when it
/// cannot be started.
int runSilently(const QString& executable, const QStringList& arguments);

} // namespace orvanta
