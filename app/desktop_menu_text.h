// SPDX-License-Identifier: MIT
#pragma once

#include "app/menu_entries.h"

namespace orvanta {

/// What becomes of a word that is longer than a line, after it has been broken at its slashes.
enum class LongWords {
    areTorn,
    stayWhole, ///< for hosts, some of which show a space where a line ends
};

/// The entry's text as a desktop's menu shows it: broken into lines that keep the menu narrow, cut
/// where the entry allows only so many. Where it allows any number, the text's own lines stay
/// lines. What no font can draw becomes U+FFFD.
QString desktopMenuText(const MenuEntry& entry, LongWords longWords);

} // namespace orvanta
