// SPDX-License-Identifier: MIT
#include "app/terminal_screen.h"

#include "app/terminal_painting.h"
#include "app/terminal_text.h"

#include <algorithm>

namespace orvanta {
namespace {

constexpr int kSmallestWidth = 20;

/// The last column stays free: terminals differ in where the cursor is after writing there.
int usableWidth(const TerminalSize& size) {
    return size.columns - 1;
}

QString withLineEnds(const QStringList& lines) {
    QString text;
    for (const QString& line : lines) {
        text += line + u'\n';
    }
    return text;
}

/// Rows that a typed line takes. The terminal shows control characters as two.
int rowsOf(const QString& typed, int columns) {
    int width = displayWidth(typed);
    for (const QChar character : typed) {
        width += character.category() == QChar::Other_Control ? 1 : 0;
    }
    return std::max(1, (width + columns - 1) / columns);
}

} // namespace

TerminalScreen::TerminalScreen(int descriptor, bool knowsCursor)
    : m_descriptor(descriptor), m_stream(descriptor, [this] { update(); }),
      m_size(knowsCursor ? terminalSize(descriptor) : std::nullopt) {}

void TerminalScreen::printLine(const QString& line) {
    m_backlog.add(harmless(line));
    update();
}

void TerminalScreen::show(std::vector<MenuEntry> entries) {
    m_entries = std::move(entries);
    update();
}

void TerminalScreen::handleResize() {
    if (!m_size) {
        return;
    }
    const auto size = terminalSize(m_descriptor);
    if (size && size != m_size) {
        m_size = size;
        m_mustRepaint = m_block.has_value();
        update();
    }
}

void TerminalScreen::handleContinue() {
    if (m_size) {
        leaveBlockBehind();
        m_shown.clear();
        update();
    }
}

void TerminalScreen::handleEchoedLine(const QString& line) {
    if (m_size && m_block) {
        m_rowsBelowBlock += rowsOf(line, m_size->columns);
        m_mustRepaint = true;
        update();
    }
}

void TerminalScreen::leaveBlockBehind() {
    m_block.reset();
    m_rowsBelowBlock = 0;
    m_mustRepaint = false;
}

void TerminalScreen::update() {
    if (m_stream.isIdle()) {
        const QString text = frame();
        if (!text.isEmpty()) {
            m_stream.write(text.toUtf8());
        }
    }
}

QString TerminalScreen::frame() {
    const std::vector<LaidOutEntry> menu = layout();
    const QStringList block = linesOf(menu, m_size.has_value());
    if (!canDrawInPlace(block)) {
        QString text = frameAppended(m_backlog.take(), menu);
        m_shown = menu;
        return text;
    }
    QString text = frameInPlace(takeHardWrapped(), block);
    m_shown = menu;
    m_block = block;
    return text;
}

std::vector<LaidOutEntry> TerminalScreen::layout() const {
    return m_size ? layoutForTerminal(m_entries, std::max(usableWidth(*m_size), kSmallestWidth))
                  : layoutForLog(m_entries);
}

bool TerminalScreen::canDrawInPlace(const QStringList& block) const {
    return m_size && hasMenu() && usableWidth(*m_size) >= kSmallestWidth &&
           block.size() < m_size->rows && isInForeground(m_descriptor);
}

QStringList TerminalScreen::takeHardWrapped() {
    QStringList rows;
    for (const QString& line : m_backlog.take()) {
        rows += splitAtWidth(line, usableWidth(*m_size));
    }
    return rows;
}

QString TerminalScreen::frameInPlace(const QStringList& printed, const QStringList& block) {
    if (!m_block) {
        return repaint(0, printed, block);
    }
    const bool fits = printed.size() + block.size() < m_size->rows;
    if (fits && !m_mustRepaint) {
        return patch(*m_block, printed, block);
    }
    const int rowsUp = static_cast<int>(m_block->size()) + m_rowsBelowBlock;
    m_mustRepaint = false;
    m_rowsBelowBlock = 0;
    return repaint(rowsUp, printed, block);
}

QString TerminalScreen::frameAppended(const QStringList& printed,
                                      const std::vector<LaidOutEntry>& menu) {
    const QStringList changes = linesOf(changedEntries(m_shown, menu), m_size.has_value());
    if (!printed.isEmpty() || !changes.isEmpty()) {
        leaveBlockBehind();
    }
    return withLineEnds(printed + changes);
}

} // namespace orvanta
