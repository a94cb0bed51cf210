// SPDX-License-Identifier: MIT
#include "app/desktop_toolkit.h"

namespace orvanta {

DesktopToolkit& desktopToolkit() {
    return widgetsToolkit();
}

} // namespace orvanta
