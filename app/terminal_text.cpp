// SPDX-License-Identifier: MIT
#include "app/terminal_text.h"

#include "app/character_width.h"

#include <algorithm>

namespace orvanta {
namespace {

constexpr char32_t kReplacement = 0xFFFD;
constexpr char16_t kEllipsis = 0x2026;

bool isBetween(char32_t character, char32_t first, char32_t last) {
    return first <= character && character <= last;
}

/// Changes the order of what stands beside it, or hides text.
bool isTreacherous(char32_t character) {
    return character == 0x061C || isBetween(character, 0x200E, 0x200F) ||
           isBetween(character, 0x202A, 0x202E) || isBetween(character, 0x2066, 0x206F) ||
           isBetween(character, 0xFFF9, 0xFFFB) || isBetween(character, 0xE0000, 0xE0FFF);
}

char32_t harmlessCharacter(char32_t character) {
    const auto category = QChar::category(character);
    if (isBetween(character, '\t', '\r') || category == QChar::Separator_Line ||
        category == QChar::Separator_Paragraph) {
        return ' ';
    }
    const bool isRefused = category == QChar::Other_Control || category == QChar::Other_Surrogate ||
                           isTreacherous(character);
    return isRefused ? kReplacement : character;
}

/// The character that begins at `index`; half a pair stands for itself.
char32_t characterAt(QStringView text, qsizetype index) {
    const QChar first = text[index];
    if (first.isHighSurrogate() && index + 1 < text.size() && text[index + 1].isLowSurrogate()) {
        return QChar::surrogateToUcs4(first, text[index + 1]);
    }
    return first.unicode();
}

qsizetype lengthOf(char32_t character) {
    return QChar::requiresSurrogates(character) ? 2 : 1;
}

/// Number of UTF-16 units of the longest beginning of `text` that fits into `width` columns, with
/// the marks that belong to its last character.
qsizetype fittingLength(QStringView text, int width) {
    int taken = 0;
    qsizetype length = 0;
    while (length < text.size()) {
        const char32_t character = characterAt(text, length);
        taken += characterWidth(character);
        if (taken > width) {
            break;
        }
        length += lengthOf(character);
    }
    return length;
}

/// Where to end a line that has room for `fitting` units of `text`: at the last space, or in the
/// middle of a word that is too long for any line. Never at 0.
qsizetype breakPosition(QStringView text, qsizetype fitting) {
    const qsizetype space = text.left(fitting + 1).lastIndexOf(u' ');
    if (space > 0) {
        return space;
    }
    return std::max<qsizetype>(fitting, 1);
}

} // namespace

QString harmless(const QString& text) {
    // Nearly always, and the rest of this is slow.
    if (std::all_of(text.begin(), text.end(),
                    [](QChar unit) { return isBetween(unit.unicode(), ' ', '~'); })) {
        return text;
    }
    const QString lines = QString(text).replace(QLatin1String("\r\n"), QLatin1String("\n"));
    QString result;
    for (qsizetype index = 0; index < lines.size();) {
        const char32_t character = characterAt(lines, index);
        result += QChar::fromUcs4(harmlessCharacter(character));
        index += lengthOf(character);
    }
    return result;
}

int displayWidth(const QString& text) {
    int width = 0;
    for (qsizetype index = 0; index < text.size();) {
        const char32_t character = characterAt(text, index);
        width += characterWidth(character);
        index += lengthOf(character);
    }
    return width;
}

QString cutToWidth(const QString& text, int width) {
    if (displayWidth(text) <= width) {
        return text;
    }
    return text.left(fittingLength(text, width - 1)) + QChar(kEllipsis);
}

QStringList wrapToWidth(const QString& text, int width) {
    QStringList lines;
    QStringView rest = QStringView(text).trimmed();
    do {
        const qsizetype fitting = fittingLength(rest, width);
        const qsizetype end = fitting == rest.size() ? fitting : breakPosition(rest, fitting);
        lines.append(rest.left(end).trimmed().toString());
        rest = rest.mid(end).trimmed();
    } while (!rest.isEmpty());
    return lines;
}

QStringList wrapToWidth(const QString& text, int width, int maximumLines) {
    QStringList lines = wrapToWidth(text, width);
    if (lines.size() <= maximumLines) {
        return lines;
    }
    const QString overflow = lines.mid(maximumLines - 1).join(u' ');
    lines = lines.mid(0, maximumLines - 1);
    lines.append(cutToWidth(overflow, width));
    return lines;
}

QStringList splitAtWidth(const QString& text, int width) {
    QStringList lines;
    QStringView rest(text);
    do {
        const qsizetype end = std::max<qsizetype>(fittingLength(rest, width), 1);
        lines.append(rest.left(end).toString());
        rest = rest.mid(end);
    } while (!rest.isEmpty());
    return lines;
}

} // namespace orvanta
