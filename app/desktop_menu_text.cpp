// SPDX-License-Identifier: MIT
#include "app/desktop_menu_text.h"

#include "app/terminal_text.h"

namespace orvanta {
namespace {

/// Menus grow as wide as their widest line; this leaves room for their longest command.
constexpr int kColumns = 56;

constexpr char32_t kReplacement = 0xFFFD;

char32_t drawableCharacter(char32_t character) {
    switch (character) {
    case '\t':
        return ' ';
    case '\r':
    case '\n':
    case '\v':
    case '\f':
    case QChar::LineSeparator:
    case QChar::ParagraphSeparator:
        return '\n';
    default:
        return QChar::category(character) == QChar::Other_Control ? kReplacement : character;
    }
}

/// Marks that set the direction of writing stay: a menu keeps what they do within their line.
QString drawable(const QString& text) {
    QString result;
    for (const uint character :
         QString(text).replace(QLatin1String("\r\n"), QLatin1String("\n")).toUcs4()) {
        result += QChar::fromUcs4(drawableCharacter(character));
    }
    return result.trimmed();
}

/// The parts of `word` between which a line may end, in their order.
QStringList partsOf(const QString& word, LongWords longWords) {
    if (displayWidth(word) <= kColumns) {
        return {word};
    }
    QStringList parts;
    for (qsizetype begin = 0; begin < word.size();) {
        const qsizetype slash = word.indexOf(u'/', begin);
        const qsizetype end = slash < 0 ? word.size() : slash + 1;
        const QString part = word.mid(begin, end - begin);
        parts += longWords == LongWords::areTorn ? splitAtWidth(part, kColumns) : QStringList{part};
        begin = end;
    }
    return parts;
}

/// Lines that are filled from top to bottom. The last one that is allowed takes all the rest.
class Lines {
public:
    explicit Lines(int maximum) : m_maximum(maximum) {}

    void addParagraph(const QString& text, LongWords longWords) {
        m_lines.emplace_back();
        m_width = 0;
        for (const QString& word : text.split(u' ')) {
            QString between = QStringLiteral(" ");
            for (const QString& part : partsOf(word, longWords)) {
                add(between, part);
                between.clear();
            }
        }
    }

    const QStringList& all() const { return m_lines; }

private:
    void add(const QString& between, const QString& part) {
        const int width = displayWidth(part);
        if (m_lines.last().isEmpty()) {
            m_lines.last() = part;
            m_width = width;
        } else if (m_width + between.size() + width <= kColumns || m_lines.size() == m_maximum) {
            m_lines.last() += between + part;
            m_width += static_cast<int>(between.size()) + width;
        } else {
            m_lines.append(part);
            m_width = width;
        }
    }

    const int m_maximum;
    QStringList m_lines;
    int m_width = 0; ///< of the last line
};

} // namespace

QString desktopMenuText(const MenuEntry& entry, LongWords longWords) {
    const QString text = drawable(entry.text);
    Lines lines(entry.maximumLines);
    if (entry.maximumLines == MenuEntry::kUnlimitedLines) {
        for (const QString& paragraph : text.split(u'\n')) {
            lines.addParagraph(paragraph, longWords);
        }
        return lines.all().join(u'\n');
    }
    lines.addParagraph(QString(text).replace(u'\n', u' '), longWords);
    QStringList cut;
    for (const QString& line : lines.all()) {
        cut.append(cutToWidth(line, kColumns));
    }
    return cut.join(u'\n');
}

} // namespace orvanta
