// SPDX-License-Identifier: MIT
#include "connector/port_announcement.h"

#include <QStringDecoder>
#include <QStringView>

#include <algorithm>

namespace orvanta {
namespace {

bool isNewline(QChar c) {
    const auto unit = c.unicode();
    return (unit >= 0x000A && unit <= 0x000D) || unit == 0x0085 || unit == 0x2028 || unit == 0x2029;
}

QString decodeLeniently(const QByteArray& chunk) {
    using Flag = QStringDecoder::Flag;
    // A byte order mark is output like any other: a line that begins with one is no bare "PORT:".
    QStringDecoder decoder(QStringDecoder::Utf8, Flag::Stateless | Flag::ConvertInitialBom);
    return decoder.decode(chunk);
}

/// How many units of `text` the character at `index` takes if it is a digit, of any script; else 0.
qsizetype digitSize(QStringView text, qsizetype index) {
    if (text[index].isDigit()) {
        return 1;
    }
    const bool isPair = text[index].isHighSurrogate() && index + 1 < text.size() &&
                        text[index + 1].isLowSurrogate();
    return isPair && QChar::isDigit(QChar::surrogateToUcs4(text[index], text[index + 1])) ? 2 : 0;
}

QStringView leadingDigits(QStringView text) {
    qsizetype end = 0;
    while (end < text.size()) {
        const qsizetype size = digitSize(text, end);
        if (size == 0) {
            break;
        }
        end += size;
    }
    return text.first(end);
}

/// Of an address of this machine, which `text` begins with; else empty.
QStringView digitsOfPort(QStringView text) {
    for (const QStringView host : {u"127.0.0.1:", u"localhost:"}) {
        if (text.startsWith(host)) {
            return leadingDigits(text.sliced(host.size()));
        }
    }
    return {};
}

/// The connector's start-up line, anywhere within the line. Empty when there is none.
QStringView digitsOfStartUpLine(QStringView line) {
    constexpr QStringView kAnnouncement = u"Desktop Connector running on http://";
    QStringView digits;
    qsizetype at = line.indexOf(kAnnouncement);
    while (at >= 0 && digits.isEmpty()) {
        digits = digitsOfPort(line.sliced(at + kAnnouncement.size()));
        at = line.indexOf(kAnnouncement, at + 1);
    }
    return digits;
}

/// A whole line of "PORT:", optional white space and digits. Empty when it is another one.
QStringView digitsOfPortLine(QStringView line) {
    constexpr QStringView kWord = u"PORT:";
    if (!line.startsWith(kWord)) {
        return {};
    }
    const auto start = std::find_if_not(line.begin() + kWord.size(), line.end(),
                                        [](QChar c) { return c.isSpace(); });
    const QStringView rest = line.sliced(start - line.begin());
    const QStringView digits = leadingDigits(rest);
    return digits.size() == rest.size() ? digits : QStringView();
}

} // namespace

QStringList outputLines(const QByteArray& chunk) {
    const QString text = decodeLeniently(chunk);
    QStringList lines;
    auto lineStart = text.begin();
    while (lineStart != text.end()) {
        const auto lineEnd = std::find_if(lineStart, text.end(), isNewline);
        if (lineEnd != lineStart) {
            lines.append(QString(lineStart, lineEnd - lineStart));
        }
        lineStart = std::find_if_not(lineEnd, text.end(), isNewline);
    }
    return lines;
}

std::optional<std::int64_t> parsePort(const QString& line) {
    QStringView digits = digitsOfStartUpLine(line);
    if (digits.isEmpty()) {
        digits = digitsOfPortLine(line);
    }
    // Not when the number is too large, or written in other digits than those of ASCII.
    bool ok = false;
    const auto port = digits.toLongLong(&ok);
    return ok ? std::optional<std::int64_t>(port) : std::nullopt;
}

} // namespace orvanta
