// SPDX-License-Identifier: MIT
#pragma once

namespace orvanta {

class Environment;

enum class FrontEndKind { desktop, terminal };

/// Runs the application until it is asked to quit; the exit status of the process. Says on
/// standard error when it cannot run, on standard output when it runs already. Needs a
/// QCoreApplication, for the desktop a QApplication. Throws `PlatformError` when the system refuses
/// what nothing works without.
int runTray(Environment& environment, FrontEndKind frontEnd);

} // namespace orvanta
