// SPDX-License-Identifier: MIT
#include "app/terminal_painting.h"

namespace orvanta {
namespace {

constexpr char kSaveCursor[] = "\0337";
constexpr char kRestoreCursor[] = "\0338";
/// Down a row in the same column, scrolling at the bottom.
constexpr char kIndex[] = "\033D";
constexpr char kClearToLineEnd[] = "\x1b[K";
constexpr char kClearToScreenEnd[] = "\x1b[J";
constexpr char kNextRow[] = "\r\n";

/// A sequence with a count, which terminals read as 1 when it is 0.
QString times(int count, char command) {
    return count > 0 ? QStringLiteral("\x1b[%1%2").arg(count).arg(QLatin1Char(command)) : QString();
}

QString up(int rows) {
    return times(rows, 'A');
}

QString down(int rows) {
    return times(rows, 'B');
}

/// Makes sure that there are `rows` rows below the cursor, which stays at its text.
QString makeRoomBelow(int rows) {
    return QString(QLatin1String(kIndex)).repeated(rows) + up(rows);
}

QString rewritten(const QString& line) {
    return line + QLatin1String(kClearToLineEnd);
}

} // namespace

QString repaint(int rowsUp, const QStringList& above, const QStringList& block) {
    QString painting = u'\r' + up(rowsUp);
    for (const QString& line : above + block) {
        painting += rewritten(line) + QLatin1String(kNextRow);
    }
    return painting + QLatin1String(kClearToScreenEnd);
}

QString patch(const QStringList& before, const QStringList& above, const QStringList& after) {
    const QStringList now = above + after;
    if (now == before) {
        return {};
    }
    const int height = static_cast<int>(before.size());
    const int growth = static_cast<int>(now.size()) - height;
    QString painting = makeRoomBelow(growth) + QLatin1String(kSaveCursor) + up(height) + u'\r' +
                       times(growth, 'L') + times(-growth, 'M');
    for (int row = 0; row < now.size(); ++row) {
        if (growth != 0 || now[row] != before[row]) {
            painting += rewritten(now[row]);
        }
        painting += QLatin1String(kNextRow);
    }
    return painting + QLatin1String(kRestoreCursor) + down(growth) + up(-growth);
}

} // namespace orvanta
