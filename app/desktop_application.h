// SPDX-License-Identifier: MIT
#pragma once

#include <QCoreApplication>

#include <memory>

namespace orvanta {

/// The toolkit's application on a desktop: without windows that would end it, never started again
/// by the desktop's session on top of the login item. When no desktop can be reached, says so on
/// standard error and ends the process with `exitStatus`, since the toolkit does not return then.
std::unique_ptr<QCoreApplication> makeDesktopApplication(int& argc, char** argv, int exitStatus);

/// Ends the process without destroying what libraries keep for all of it: the bus thread of the
/// toolkit may still be using that, and Quit would now and then end in a crash. Called by main,
/// when nothing of ours is left.
[[noreturn]] void leaveProcess(int exitStatus);

} // namespace orvanta
