// SPDX-License-Identifier: MIT
#include "platform/posix/desktop_services.h"

#include "platform/macos/accessory.h"
#include "platform/macos/archive_tool.h"
#include "platform/macos/browser.h"
#include "platform/macos/content_digest.h"
#include "platform/macos/locations.h"
#include "platform/macos/login_item.h"
#include "platform/macos/tray_host.h"

namespace orvanta {

DesktopServices makeDesktopServices(const Environment& environment,
                                    std::function<void(const QString&)> complain) {
    return {.locations = std::make_unique<MacLocations>(environment),
            .browser = std::make_unique<MacBrowser>(std::move(complain)),
            .loginItem = std::make_unique<MacLoginItem>(),
            .becomeAccessory = becomeAccessory};
}

std::unique_ptr<TrayHost> makeTrayHost() {
    return std::make_unique<MenuBarHost>();
}

std::unique_ptr<ArchiveTool> makeArchiveTool() {
    return std::make_unique<DittoArchiveTool>();
}

std::unique_ptr<ContentDigest> makeContentDigest() {
    return std::make_unique<CommonCryptoContentDigest>();
}

} // namespace orvanta
