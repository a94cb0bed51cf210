// SPDX-License-Identifier: MIT
#pragma once

#include "app/menu_entries.h"
#include "app/tray_icon.h"
#include "platform/tray_host.h"

#include <functional>
#include <memory>

class QCoreApplication;

namespace orvanta {

/// What the desktop front end takes from the toolkit's windows. A front end without them, the
/// terminal, never has these libraries in its memory. Main thread only.
class DesktopToolkit {
public:
    virtual ~DesktopToolkit() = default;

    /// The toolkit's application, to be made before anything else here. Without a desktop it ends
    /// the process with `exitStatus`, having said so on standard error.
    virtual std::unique_ptr<QCoreApplication> makeApplication(int& argc, char** argv,
                                                              int exitStatus) = 0;

    /// The place for icons on the system this is built for.
    virtual std::unique_ptr<TrayHost> makeTrayHost() = 0;

    /// An icon for `host`, which must be there and outlives it. `choose` is called with what the
    /// user chose from the menu.
    virtual std::unique_ptr<TrayIcon> makeIcon(const TrayHost& host,
                                               std::function<void(MenuEntryId)> choose) = 0;
};

/// The one there is, of the libraries this is linked with. Called by whoever is linked with them.
DesktopToolkit& widgetsToolkit();

/// The same, also for a program that is not linked with them: on Linux they are loaded now. Throws
/// `PlatformError` when that fails. Called by main.
DesktopToolkit& desktopToolkit();

} // namespace orvanta
