// SPDX-License-Identifier: MIT
#include "app/terminal_backlog.h"

#include <utility>

namespace orvanta {

void TerminalBacklog::add(const QString& line) {
    const qsizetype size = line.toUtf8().size() + 1;
    // Once a line is missing, later ones may not fill the gap.
    if (m_droppedCount > 0 || m_size + size > kCapacity) {
        ++m_droppedCount;
        return;
    }
    m_lines.append(line);
    m_size += size;
}

QStringList TerminalBacklog::take() {
    QStringList lines = std::exchange(m_lines, {});
    m_size = 0;
    if (const int count = std::exchange(m_droppedCount, 0); count > 0) {
        lines.append(
            count == 1
                ? QStringLiteral("(1 line was dropped because nobody read it)")
                : QStringLiteral("(%1 lines were dropped because nobody read them)").arg(count));
    }
    return lines;
}

} // namespace orvanta
