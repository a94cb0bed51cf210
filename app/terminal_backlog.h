// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

namespace orvanta {

/// Printed lines that the reader has not taken yet: 64 KiB of them, of later ones only the number.
class TerminalBacklog {
public:
    static constexpr qsizetype kCapacity = 65536; ///< bytes, line ends included

    void add(const QString& line);

    /// The kept lines and, if any were dropped, one that says how many. Leaves nothing.
    QStringList take();

private:
    QStringList m_lines;
    qsizetype m_size = 0;
    int m_droppedCount = 0;
};

} // namespace orvanta
