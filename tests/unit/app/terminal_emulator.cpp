// SPDX-License-Identifier: MIT
#include "unit/app/terminal_emulator.h"

#include <QRegularExpression>

#include <algorithm>

namespace orvanta {

TerminalEmulator::TerminalEmulator(int columns, int rows)
    : m_columns(columns), m_rows(rows), m_screen(static_cast<std::size_t>(rows), blankRow()) {}

void TerminalEmulator::feed(const QString& output) {
    for (qsizetype index = 0; index < output.size();) {
        const QChar character = output[index];
        const qsizetype taken = character == QChar(0x1B) ? escapeSequence(output, index) : 0;
        if (taken == 0) {
            put(character);
        }
        index += std::max<qsizetype>(taken, 1);
    }
}

/// Length of the sequence that was obeyed; 0 for none.
qsizetype TerminalEmulator::escapeSequence(const QString& output, qsizetype index) {
    static const QRegularExpression pattern(
        QStringLiteral("\\G\x1b(?:([78D])|\\[(\\d*)([ABJKLMm]))"));
    const auto match = pattern.match(output, index);
    if (!match.hasMatch()) {
        return 0;
    }
    if (match.capturedLength(1) > 0) {
        control(match.captured(1)[0], 0);
    } else {
        control(match.captured(3)[0], std::max(match.captured(2).toInt(), 1));
    }
    return match.capturedLength();
}

void TerminalEmulator::control(QChar command, int count) {
    switch (command.unicode()) {
    case '7':
        m_savedRow = m_row;
        m_savedColumn = m_column;
        return;
    case '8':
        m_row = m_savedRow;
        m_column = m_savedColumn;
        return;
    case 'D':
        return lineFeed();
    case 'A':
        m_row = std::max(m_row - count, 0);
        return;
    case 'B':
        m_row = std::min(m_row + count, m_rows - 1);
        return;
    case 'J':
        return clearToScreenEnd();
    case 'K':
        m_screen[m_row].replace(m_column, m_columns, QString(m_columns - m_column, u' '));
        return;
    case 'L':
        return insertRows(count);
    case 'M':
        return deleteRows(count);
    default:
        return;
    }
}

void TerminalEmulator::put(QChar character) {
    if (character == u'\r') {
        m_column = 0;
    } else if (character == u'\n') {
        lineFeed();
    } else {
        if (m_column == m_columns) {
            m_column = 0;
            lineFeed();
        }
        m_screen[m_row][m_column++] = character;
    }
}

void TerminalEmulator::lineFeed() {
    if (m_row + 1 < m_rows) {
        ++m_row;
        return;
    }
    m_history.append(m_screen.front());
    m_screen.erase(m_screen.begin());
    m_screen.push_back(blankRow());
}

void TerminalEmulator::insertRows(int count) {
    m_screen.insert(m_screen.begin() + m_row, static_cast<std::size_t>(count), blankRow());
    m_screen.resize(static_cast<std::size_t>(m_rows));
}

void TerminalEmulator::deleteRows(int count) {
    const int last = std::min(m_row + count, m_rows);
    m_screen.erase(m_screen.begin() + m_row, m_screen.begin() + last);
    m_screen.resize(static_cast<std::size_t>(m_rows), blankRow());
}

void TerminalEmulator::clearToScreenEnd() {
    control(u'K', 1);
    std::fill(m_screen.begin() + m_row + 1, m_screen.end(), blankRow());
}

QStringList TerminalEmulator::text() const {
    QStringList lines = m_history;
    for (const QString& row : m_screen) {
        lines.append(row);
    }
    for (QString& line : lines) {
        while (line.endsWith(u' ')) {
            line.chop(1);
        }
    }
    while (!lines.isEmpty() && lines.last().isEmpty()) {
        lines.removeLast();
    }
    return lines;
}

} // namespace orvanta
