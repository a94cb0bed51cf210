// SPDX-License-Identifier: MIT
#include "app/terminal_commands.h"

#include <QStringList>

#include <algorithm>
#include <utility>

namespace orvanta {
namespace {

bool canBeChosen(const MenuEntry& entry) {
    return entry.isVisible && entry.isEnabled;
}

QString number(const MenuEntry& entry) {
    return QString::number(static_cast<int>(entry.id));
}

} // namespace

std::vector<LineSplitter::Line> LineSplitter::feed(const QByteArray& bytes) {
    std::vector<Line> lines;
    qsizetype begin = 0;
    for (qsizetype end = bytes.indexOf('\n'); end >= 0; end = bytes.indexOf('\n', begin)) {
        keep(bytes.mid(begin, end - begin));
        lines.push_back(take());
        begin = end + 1;
    }
    keep(bytes.mid(begin));
    return lines;
}

std::vector<LineSplitter::Line> LineSplitter::finish() {
    if (m_begun.isEmpty() && !m_isTooLong) {
        return {};
    }
    return {take()};
}

void LineSplitter::keep(const QByteArray& bytes) {
    m_isTooLong = m_isTooLong || m_begun.size() + bytes.size() > kLongestLine;
    if (m_isTooLong) {
        m_begun.clear();
    } else {
        m_begun += bytes;
    }
}

LineSplitter::Line LineSplitter::take() {
    const QByteArray line = std::exchange(m_begun, {});
    const bool wasTooLong = std::exchange(m_isTooLong, false);
    return wasTooLong ? Line() : Line(line);
}

std::optional<MenuEntryId> commandFor(const std::vector<MenuEntry>& entries,
                                      const QByteArray& line) {
    const QString typed = QString::fromUtf8(line).trimmed();
    const auto entry =
        std::find_if(entries.begin(), entries.end(), [&typed](const MenuEntry& candidate) {
            return canBeChosen(candidate) &&
                   (typed == number(candidate) ||
                    typed.compare(candidate.text, Qt::CaseInsensitive) == 0);
        });
    return entry == entries.end() ? std::nullopt : std::optional(entry->id);
}

QString commandHelp(const std::vector<MenuEntry>& entries) {
    QStringList choices;
    for (const MenuEntry& entry : entries) {
        if (canBeChosen(entry)) {
            choices.append(number(entry) + u' ' + entry.text);
        }
    }
    return QStringLiteral("Type the number or the name of one of these: %1.")
        .arg(choices.join(QStringLiteral(", ")));
}

} // namespace orvanta
