// SPDX-License-Identifier: MIT
#include "app/desktop_toolkit.h"

/// The one name of this module that `desktopToolkit` looks up.
extern "C" Q_DECL_EXPORT orvanta::DesktopToolkit* orvantaDesktopToolkit() {
    return &orvanta::widgetsToolkit();
}
