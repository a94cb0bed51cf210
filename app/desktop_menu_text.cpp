// SPDX-License-Identifier: MIT
#include "app/desktop_menu_text.h"

#include "app/terminal_text.h"

namespace orvanta {
namespace {

/// Menus grow as wide as their widest line; this leaves room for their longest command.
constexpr int kColumns = 56;

} // namespace

QString desktopMenuText(const MenuEntry& entry) {
    const QString text = harmless(entry.text);
    const QStringList lines = entry.maximumLines == MenuEntry::kUnlimitedLines
                                  ? wrapToWidth(text, kColumns)
                                  : wrapToWidth(text, kColumns, entry.maximumLines);
    return lines.join(u'\n');
}

} // namespace orvanta
