// SPDX-License-Identifier: MIT
#pragma once

namespace orvanta {

/// Makes this process robust against what it was started with; the first thing in main.
///
/// Closed standard streams are opened on /dev/null, so that no file of ours takes their place.
/// A reader that goes away (SIGPIPE) and a terminal that belongs to another job (SIGTTIN, SIGTTOU)
/// become errors of the call instead of ending or stopping the process.
void setUpProcess();

/// The C locale with UTF-8, whatever the user's is: sentences of ours end in the system's words for
/// an error, and both are English then. Called before a toolkit reads the variables, where no
/// desktop's toolkit is used; children are given the variables as they were.
void useEnglish();

/// Ends the process without destroying what libraries keep for all of it: the bus thread of a
/// desktop's toolkit may still be using that, and Quit would now and then end in a crash. Called by
/// main, when nothing of ours is left.
[[noreturn]] void leaveProcess(int exitStatus);

} // namespace orvanta
