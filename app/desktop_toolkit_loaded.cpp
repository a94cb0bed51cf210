// SPDX-License-Identifier: MIT
#include "app/desktop_toolkit.h"
#include "platform/linux/program_module.h"

namespace orvanta {

DesktopToolkit& desktopToolkit() {
    using Entry = DesktopToolkit* (*)();
    const auto entry =
        reinterpret_cast<Entry>(moduleFunction(QStringLiteral("desktop"), "orvantaDesktopToolkit"));
    return *entry();
}

} // namespace orvanta
