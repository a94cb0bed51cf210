// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace orvanta {

/// Whether nothing but files without set-uid and set-gid bits, directories, and links that cannot
/// lead out of it is below the directory `path`. False on every error. Links are not followed.
bool isPlainTree(const QString& path);

} // namespace orvanta
