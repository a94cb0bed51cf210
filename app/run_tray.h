// SPDX-License-Identifier: MIT
#pragma once

namespace orvanta {

class Environment;

/// Runs the application until it is asked to quit; the exit status of the process. Says on
/// standard error when it cannot run, on standard output when it runs already. Needs a
/// QCoreApplication. Throws `PlatformError` when the system refuses what nothing works without.
int runTray(Environment& environment);

} // namespace orvanta
