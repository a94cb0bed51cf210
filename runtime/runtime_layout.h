// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace orvanta {

class FileManager;

/// True when each of the five files that a local server needs exists below `localServer`. Any
/// thread, like `files`.
bool hasRequiredLocalServerFiles(const FileManager& files, const QString& localServer);

/// True for a directory with a complete `local-server` and an executable `node-runtime/node`.
bool isValidRuntimeRoot(const FileManager& files, const QString& root);

} // namespace orvanta
