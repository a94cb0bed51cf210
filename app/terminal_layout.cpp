// SPDX-License-Identifier: MIT
#include "app/terminal_layout.h"

#include "app/terminal_text.h"

#include <algorithm>

namespace orvanta {
namespace {

constexpr int kRuleWidth = 40;
constexpr int kNumberWidth = 2;

bool canEverBeChosen(const MenuEntry& entry) {
    return entry.kind == MenuEntryKind::button || entry.kind == MenuEntryKind::toggle;
}

QString choiceNumber(const MenuEntry& entry) {
    return QStringLiteral("%1  ").arg(static_cast<int>(entry.id), kNumberWidth);
}

QString choiceText(const MenuEntry& entry) {
    const QString text = harmless(entry.text);
    if (entry.kind != MenuEntryKind::toggle) {
        return text;
    }
    return (entry.isChecked ? QStringLiteral("[x] ") : QStringLiteral("[ ] ")) + text;
}

/// The number, then the text in a column of its own.
QStringList choiceLines(const MenuEntry& entry, int width) {
    QString margin = choiceNumber(entry);
    QStringList lines = wrapToWidth(choiceText(entry), width - displayWidth(margin));
    for (QString& line : lines) {
        line.prepend(margin);
        margin.fill(u' ');
    }
    return lines;
}

QStringList textLines(const MenuEntry& entry, int width) {
    const QString text = harmless(entry.text);
    return entry.maximumLines == MenuEntry::kUnlimitedLines
               ? wrapToWidth(text, width)
               : wrapToWidth(text, width, entry.maximumLines);
}

QStringList terminalLines(const MenuEntry& entry, int width) {
    if (entry.kind == MenuEntryKind::separator) {
        return {QString(std::min(kRuleWidth, width), u'-')};
    }
    return canEverBeChosen(entry) ? choiceLines(entry, width) : textLines(entry, width);
}

LaidOutEntry::Style styleOf(const MenuEntry& entry) {
    if (entry.font == MenuFont::headline) {
        return LaidOutEntry::Style::bold;
    }
    const bool isUnavailable = canEverBeChosen(entry) && !entry.isEnabled;
    return isUnavailable || entry.isSecondary ? LaidOutEntry::Style::dim
                                              : LaidOutEntry::Style::plain;
}

QString logLine(const MenuEntry& entry) {
    if (entry.kind == MenuEntryKind::separator) {
        return QString(kRuleWidth, u'-');
    }
    if (!canEverBeChosen(entry)) {
        return harmless(entry.text);
    }
    const QString line = choiceNumber(entry) + choiceText(entry);
    return entry.isEnabled ? line : line + QStringLiteral(" (unavailable)");
}

QString styled(const QString& line, LaidOutEntry::Style style) {
    switch (style) {
    case LaidOutEntry::Style::bold:
        return QStringLiteral("\x1b[1m%1\x1b[0m").arg(line);
    case LaidOutEntry::Style::dim:
        return QStringLiteral("\x1b[2m%1\x1b[0m").arg(line);
    case LaidOutEntry::Style::plain:
        break;
    }
    return line;
}

} // namespace

std::vector<LaidOutEntry> layoutForTerminal(const std::vector<MenuEntry>& entries, int width) {
    std::vector<LaidOutEntry> result;
    for (const MenuEntry& entry : entries) {
        if (entry.isVisible) {
            result.push_back({entry.id, terminalLines(entry, width), styleOf(entry)});
        }
    }
    return result;
}

std::vector<LaidOutEntry> layoutForLog(const std::vector<MenuEntry>& entries) {
    std::vector<LaidOutEntry> result;
    for (const MenuEntry& entry : entries) {
        if (entry.isVisible) {
            result.push_back({entry.id, {logLine(entry)}, LaidOutEntry::Style::plain});
        }
    }
    return result;
}

std::vector<LaidOutEntry> changedEntries(const std::vector<LaidOutEntry>& before,
                                         const std::vector<LaidOutEntry>& now) {
    std::vector<LaidOutEntry> changed;
    std::copy_if(now.begin(), now.end(), std::back_inserter(changed),
                 [&before](const LaidOutEntry& entry) {
                     return std::find(before.begin(), before.end(), entry) == before.end();
                 });
    return changed;
}

QStringList linesOf(const std::vector<LaidOutEntry>& entries, bool isStyled) {
    QStringList lines;
    for (const LaidOutEntry& entry : entries) {
        for (const QString& line : entry.lines) {
            lines.append(isStyled ? styled(line, entry.style) : line);
        }
    }
    return lines;
}

} // namespace orvanta
