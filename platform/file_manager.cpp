// SPDX-License-Identifier: MIT
#include "platform/file_manager.h"

#include "base/platform_error.h"

namespace orvanta {

std::optional<QByteArray> readIfPossible(const FileManager& files, const QString& path) {
    try {
        return files.readFile(path);
    } catch (const PlatformError&) {
        return std::nullopt;
    }
}

} // namespace orvanta
