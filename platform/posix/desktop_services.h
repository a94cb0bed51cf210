// SPDX-License-Identifier: MIT
#pragma once

#include "platform/archive_tool.h"
#include "platform/browser.h"
#include "platform/content_digest.h"
#include "platform/environment.h"
#include "platform/locations.h"
#include "platform/login_item.h"
#include "platform/tray_host.h"

#include <QString>

#include <functional>
#include <memory>

namespace orvanta {

/// What every desktop does in its own way.
struct DesktopServices {
    std::unique_ptr<Locations> locations;
    std::unique_ptr<Browser> browser;
    std::unique_ptr<LoginItem> loginItem;
    /// Takes the application out of the Dock, where there is one. Main thread.
    std::function<void()> becomeAccessory;
};

/// Those of the system this is built for; found in platform/linux or platform/macos. `environment`
/// outlives them. `complain`, called on the main thread, shows a line to the user about a failure
/// that nothing else tells of. Throws `PlatformError` when a place of ours cannot be found. Main
/// thread only.
DesktopServices makeDesktopServices(const Environment& environment,
                                    std::function<void(const QString&)> complain);

/// The place for icons on the system this is built for. Main thread only.
std::unique_ptr<TrayHost> makeTrayHost();

/// The archive tool of the system this is built for.
std::unique_ptr<ArchiveTool> makeArchiveTool();

/// The digests of the system this is built for.
std::unique_ptr<ContentDigest> makeContentDigest();

} // namespace orvanta
