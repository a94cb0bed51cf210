// SPDX-License-Identifier: MIT
#pragma once

namespace orvanta {

/// Takes the application's icon out of the Dock and its menu out of the menu bar. Needs the
/// toolkit's desktop application; nothing happens in a process without one, in a terminal for
/// instance. Main thread only.
void becomeAccessory();

} // namespace orvanta
