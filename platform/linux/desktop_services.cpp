// SPDX-License-Identifier: MIT
#include "platform/posix/desktop_services.h"

#include "platform/linux/archive_tool.h"
#include "platform/linux/browser.h"
#include "platform/linux/locations.h"
#include "platform/linux/login_item.h"
#include "platform/linux/tray_host.h"

#include <QCoreApplication>

namespace orvanta {

DesktopServices makeDesktopServices(const Environment& environment,
                                    std::function<void(const QString&)> complain) {
    return {.locations = std::make_unique<LinuxLocations>(environment),
            .browser = std::make_unique<LinuxBrowser>(environment, std::move(complain)),
            .loginItem = std::make_unique<LinuxLoginItem>(environment,
                                                          QCoreApplication::applicationFilePath()),
            .becomeAccessory = [] {}};
}

std::unique_ptr<TrayHost> makeTrayHost() {
    return std::make_unique<StatusNotifierHost>();
}

std::unique_ptr<ArchiveTool> makeArchiveTool() {
    return std::make_unique<BsdtarArchiveTool>();
}

} // namespace orvanta
