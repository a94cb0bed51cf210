// SPDX-License-Identifier: MIT
#include "connector/port_announcement.h"

#include <QRegularExpression>
#include <QStringDecoder>

#include <algorithm>
#include <array>

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

/// Digits and white space are those of Unicode. The possessive quantifiers keep a hostile line
/// from costing more than one pass.
const std::array<QRegularExpression, 2>& announcementPatterns() {
    static const std::array patterns{
        QRegularExpression(QStringLiteral("Desktop Connector running on "
                                          "http://(?:127\\.0\\.0\\.1|localhost):(\\p{Nd}++)")),
        QRegularExpression(QStringLiteral("\\APORT:[\\t-\\r\\x{85}\\p{Z}]*+(\\p{Nd}++)\\z")),
    };
    return patterns;
}

/// Nothing for a number that is too large, or that is not written in ASCII digits alone.
std::optional<std::int64_t> parseDigits(const QString& digits) {
    bool ok = false;
    const auto value = digits.toLongLong(&ok);
    return ok ? std::optional<std::int64_t>(value) : std::nullopt;
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
    for (const auto& pattern : announcementPatterns()) {
        const auto match = pattern.match(line);
        if (match.hasMatch()) {
            return parseDigits(match.captured(1));
        }
    }
    return std::nullopt;
}

} // namespace orvanta
