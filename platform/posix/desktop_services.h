// SPDX-License-Identifier: MIT
#pragma once

#include "platform/archive_tool.h"
#include "platform/browser.h"
#include "platform/environment.h"
#include "platform/locations.h"
#include "platform/login_item.h"

#include <memory>

namespace orvanta {

/// What every desktop does in its own way.
struct DesktopServices {
    std::unique_ptr<Locations> locations;
    std::unique_ptr<Browser> browser;
    std::unique_ptr<LoginItem> loginItem;
};

/// Those of the system this is built for; found in platform/linux or platform/macos. `environment`
/// outlives them. Throws `PlatformError` when a place of ours cannot be found. Main thread only.
DesktopServices makeDesktopServices(const Environment& environment);

/// The archive tool of the system this is built for.
std::unique_ptr<ArchiveTool> makeArchiveTool();

} // namespace orvanta
