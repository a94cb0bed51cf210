// SPDX-License-Identifier: MIT
#pragma once

#include <QCoreApplication>

#include <memory>

namespace orvanta {

/// The toolkit's application on a desktop: without windows that would end it, never started again
/// by the desktop's session on top of the login item. When no desktop can be reached, says so on
/// standard error and ends the process with `exitStatus`, since the toolkit does not return then.
std::unique_ptr<QCoreApplication> makeDesktopApplication(int& argc, char** argv, int exitStatus);

} // namespace orvanta
