// SPDX-License-Identifier: MIT
#pragma once

namespace orvanta {

/// Makes this process robust against what it was started with; the first thing in main.
///
/// Closed standard streams are opened on /dev/null, so that no file of ours takes their place.
/// A reader that goes away (SIGPIPE) and a terminal that belongs to another job (SIGTTIN, SIGTTOU)
/// become errors of the call instead of ending or stopping the process.
void setUpProcess();

} // namespace orvanta
