// SPDX-License-Identifier: MIT
#include "runtime/runtime_layout.h"

#include "platform/file_manager.h"

namespace orvanta {

namespace {

constexpr const char* kRequiredLocalServerFiles[] = {
    "/server.js",          "/config.installer.json", "/cloudflared", "/views/project-list.html",
    "/public/index3.html",
};

} // namespace

bool hasRequiredLocalServerFiles(const FileManager& files, const QString& localServer) {
    for (const char* file : kRequiredLocalServerFiles) {
        if (!files.itemExists(localServer + QLatin1String(file))) {
            return false;
        }
    }
    return true;
}

bool isValidRuntimeRoot(const FileManager& files, const QString& root) {
    return hasRequiredLocalServerFiles(files, root + QStringLiteral("/local-server")) &&
           files.isExecutableFile(root + QStringLiteral("/node-runtime/node"));
}

} // namespace orvanta
