// SPDX-License-Identifier: MIT
#pragma once

#include "app/menu_entries.h"

namespace orvanta {

/// The entry's text as a desktop's menu shows it: without control characters, broken into lines
/// that keep the menu narrow, cut where the entry allows only so many.
QString desktopMenuText(const MenuEntry& entry);

} // namespace orvanta
