// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace orvanta {

/// Removes a file, a link as such, or a directory with all below it. Links are never followed, not
/// even one that takes the place of a directory meanwhile; directories whose mode forbids it are
/// made removable. Throws `PlatformError`, as for an item that does not exist.
void removeTree(const QString& path);

} // namespace orvanta
