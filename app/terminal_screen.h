// SPDX-License-Identifier: MIT
#pragma once

#include "app/menu_entries.h"
#include "app/terminal_backlog.h"
#include "app/terminal_layout.h"
#include "platform/posix/output_stream.h"
#include "platform/posix/terminal_device.h"
#include "platform/standard_output.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace orvanta {

/// The tray's standard output, with the menu at its end.
///
/// On a terminal the menu is a block that is redrawn in place, above the line on which the user
/// types; printed lines appear above the block. Where that cannot be (a file, a pipe, a terminal
/// that is too small, that knows no cursor or belongs to another job now), lines are appended: the
/// whole menu once, then what changed.
///
/// Nothing here blocks. While the reader takes nothing, the menu waits in its latest state only
/// and printed lines wait in the backlog. Main thread only.
class TerminalScreen : public StandardOutput {
public:
    /// `descriptor` stays the caller's. `knowsCursor`: a terminal there obeys escape sequences.
    TerminalScreen(int descriptor, bool knowsCursor);

    void printLine(const QString& line) override;

    /// Draws the menu, or what has changed in it. Writes nothing when nothing has.
    void show(std::vector<MenuEntry> entries);

    /// The terminal has got another size.
    void handleResize();

    /// This process has been continued: others wrote to the terminal meanwhile. Draws the whole
    /// menu anew where the cursor is.
    void handleContinue();

    /// The user ended `line`, which the terminal showed below the menu. Takes it away again.
    void handleEchoedLine(const QString& line);

private:
    bool hasMenu() const { return !m_entries.empty(); }
    /// What was drawn stays where it is; the next block is a new one.
    void leaveBlockBehind();
    void update();
    QString frame();
    QString frameInPlace(const QStringList& printed, const QStringList& block);
    QString frameAppended(const QStringList& printed, const std::vector<LaidOutEntry>& menu);
    std::vector<LaidOutEntry> layout() const;
    bool canDrawInPlace(const QStringList& block) const;
    QStringList takeHardWrapped();

    int m_descriptor;
    OutputStream m_stream;
    std::optional<TerminalSize> m_size; ///< nothing: lines are appended, without escape sequences
    TerminalBacklog m_backlog;
    std::vector<MenuEntry> m_entries;
    /// What the reader has been shown of the menu so far.
    std::vector<LaidOutEntry> m_shown;
    /// The block above the cursor; nothing before the first one and when it has been left behind.
    std::optional<QStringList> m_block;
    /// Rows by which the user's Enter moved the cursor away from the block. Ended by a repaint.
    int m_rowsBelowBlock = 0;
    bool m_mustRepaint = false;
};

} // namespace orvanta
