// SPDX-License-Identifier: MIT
#include "platform/posix/desktop_services.h"

#include "platform/linux/archive_tool.h"
#include "platform/linux/browser.h"
#include "platform/linux/locations.h"
#include "platform/linux/login_item.h"

#include <QCoreApplication>

namespace orvanta {

DesktopServices makeDesktopServices(const Environment& environment) {
    return {std::make_unique<LinuxLocations>(environment),
            std::make_unique<LinuxBrowser>(environment),
            std::make_unique<LinuxLoginItem>(environment, QCoreApplication::applicationFilePath())};
}

std::unique_ptr<ArchiveTool> makeArchiveTool() {
    return std::make_unique<BsdtarArchiveTool>();
}

} // namespace orvanta
