// SPDX-License-Identifier: MIT
#include "app/desktop_toolkit.h"
#include "platform/linux/program_module.h"

namespace orvanta {

DesktopToolkit& desktopToolkit() {
    using Entry = DesktopToolkit* (*)();
    // Its descriptor, by which the loader knows it, must not become that of another module.
    static const ProgramModule module(QStringLiteral("desktop"));
    const auto entry = reinterpret_cast<Entry>(module.function("orvantaDesktopToolkit"));
    return *entry();
}

} // namespace orvanta
