// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace orvanta {

/// The absolute path of this program's file, without links. Read as a link and not resolved, so
/// that its folder still holds after the file has been replaced; its name has " (deleted)" behind
/// it then. Needs no QCoreApplication. Throws `PlatformError` when the system does not tell.
QString runningExecutable();

} // namespace orvanta
