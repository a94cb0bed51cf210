// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

#include <vector>

namespace orvanta {

/// As much of a terminal as the menu uses: a grid with a cursor, scrolling, wrapping. Characters
/// are one column wide. An escape sequence it does not know shows up as text.
class TerminalEmulator {
public:
    TerminalEmulator(int columns, int rows);

    void feed(const QString& output);

    /// What has scrolled away at the top and then the screen, without spaces at the ends of lines
    /// and without empty lines at the end.
    QStringList text() const;
    int cursorRow() const { return m_row; }
    int cursorColumn() const { return m_column; }

private:
    using Grid = std::vector<QString>;

    qsizetype escapeSequence(const QString& output, qsizetype index);
    void control(QChar command, int count);
    void put(QChar character);
    void lineFeed();
    QString blankRow() const { return QString(m_columns, u' '); }
    void insertRows(int count);
    void deleteRows(int count);
    void clearToScreenEnd();

    int m_columns;
    int m_rows;
    Grid m_screen;
    QStringList m_history;
    int m_row = 0;
    int m_column = 0;
    int m_savedRow = 0;
    int m_savedColumn = 0;
};

} // namespace orvanta
