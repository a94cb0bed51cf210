// SPDX-License-Identifier: MIT
#pragma once

#include "app/menu_entries.h"

#include <QString>
#include <QStringList>

#include <vector>

namespace orvanta {

/// One visible entry as lines of harmless text.
struct LaidOutEntry {
    enum class Style { plain, bold, dim };

    MenuEntryId id = MenuEntryId::status;
    QStringList lines;
    Style style = Style::plain;

    bool operator==(const LaidOutEntry&) const = default;
};

/// For a terminal that has `width` columns (20 or more) to write on: no line is longer, what
/// cannot be chosen is dim.
std::vector<LaidOutEntry> layoutForTerminal(const std::vector<MenuEntry>& entries, int width);

/// For a file or a pipe: one line per entry, nothing cut, what cannot be chosen says so.
std::vector<LaidOutEntry> layoutForLog(const std::vector<MenuEntry>& entries);

/// The entries of `now` that `before` did not have or had otherwise.
std::vector<LaidOutEntry> changedEntries(const std::vector<LaidOutEntry>& before,
                                         const std::vector<LaidOutEntry>& now);

/// The lines one after the other. With `isStyled`, bold and dim are escape sequences.
QStringList linesOf(const std::vector<LaidOutEntry>& entries, bool isStyled);

} // namespace orvanta
