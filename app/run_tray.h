// SPDX-License-Identifier: MIT
#pragma once

namespace orvanta {

class DesktopToolkit;
class Environment;

/// Runs the application until it is asked to quit; the exit status of the process. On the desktop
/// of `toolkit`, or, without one, in the terminal. Says on standard error when it cannot run, on
/// standard output when it runs already. Needs a QCoreApplication, on a desktop that of `toolkit`.
/// Throws `PlatformError` when the system refuses what nothing works without.
int runTray(Environment& environment, DesktopToolkit* toolkit);

} // namespace orvanta
