// SPDX-License-Identifier: MIT
#include "fuzz/plain_output.h"

#include "fuzz/plain_number.h"
#include "fuzz/plain_text.h"

#include <QRegularExpression>
#include <QString>

#include <array>

namespace orvanta::fuzz {
namespace {

std::optional<std::int64_t> valueOf(std::u32string_view digits) {
    std::string ascii;
    for (const char32_t digit : digits) {
        if (digit > U'9') {
            return std::nullopt;
        }
        ascii += static_cast<char>(digit);
    }
    return plainDigits(false, ascii);
}

const std::array<QRegularExpression, 2>& patterns() {
    static const std::array both{
        QRegularExpression(QStringLiteral("Desktop Connector running on "
                                          "http://(?:127\\.0\\.0\\.1|localhost):(\\p{Nd}++)")),
        QRegularExpression(QStringLiteral("\\APORT:[\\t-\\r\\x{85}\\p{Z}]*+(\\p{Nd}++)\\z")),
    };
    return both;
}

} // namespace

std::vector<std::u32string> plainLines(std::string_view chunk) {
    constexpr std::u32string_view kNewlines = U"\n\v\f\r\u0085\u2028\u2029";
    std::vector<std::u32string> lines(1);
    for (const char32_t character : decodeLeniently(chunk)) {
        if (kNewlines.find(character) != kNewlines.npos) {
            lines.emplace_back();
        } else {
            lines.back() += character;
        }
    }
    std::erase(lines, U"");
    return lines;
}

std::optional<std::int64_t> plainPort(const std::u32string& line) {
    // Not by fromUcs4, which takes a byte order mark for one.
    QString text;
    for (const char32_t character : line) {
        text += QChar::fromUcs4(character);
    }
    for (const QRegularExpression& pattern : patterns()) {
        const auto match = pattern.match(text);
        if (match.hasMatch()) {
            return valueOf(match.captured(1).toStdU32String());
        }
    }
    return std::nullopt;
}

} // namespace orvanta::fuzz
