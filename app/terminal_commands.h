// SPDX-License-Identifier: MIT
#pragma once

#include "app/menu_entries.h"

#include <QByteArray>
#include <QString>

#include <optional>
#include <vector>

namespace orvanta {

/// Cuts what is typed into lines.
class LineSplitter {
public:
    /// More bytes than this, without the line end, are no command.
    static constexpr qsizetype kLongestLine = 4096;

    /// A line without its end, or nothing for one that was too long and has been dropped.
    using Line = std::optional<QByteArray>;

    /// The lines that `bytes` completes.
    std::vector<Line> feed(const QByteArray& bytes);
    /// What stands unfinished after the last line end, if anything.
    std::vector<Line> finish();

private:
    void keep(const QByteArray& bytes);
    Line take();

    QByteArray m_begun;
    bool m_isTooLong = false;
};

/// The entry whose number or text `line` is, whatever its case and the spaces around it; nothing
/// unless that entry can be chosen now.
std::optional<MenuEntryId> commandFor(const std::vector<MenuEntry>& entries,
                                      const QByteArray& line);

/// One line that says what can be typed now.
QString commandHelp(const std::vector<MenuEntry>& entries);

} // namespace orvanta
