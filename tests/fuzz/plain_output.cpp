// SPDX-License-Identifier: MIT
#include "fuzz/plain_output.h"

#include "fuzz/plain_number.h"
#include "fuzz/plain_text.h"

#include <QChar>

namespace orvanta::fuzz {
namespace {

bool isDigit(char32_t character) {
    return QChar::category(character) == QChar::Number_DecimalDigit;
}

bool isSpace(char32_t character) {
    const auto category = QChar::category(character);
    return character == U'\t' || category == QChar::Separator_Space ||
           category == QChar::Separator_Line || category == QChar::Separator_Paragraph;
}

/// The digits of any script that `text` begins with.
std::u32string_view digitsOf(std::u32string_view text) {
    std::size_t count = 0;
    while (count < text.size() && isDigit(text[count])) {
        ++count;
    }
    return text.substr(0, count);
}

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

/// The digits of the first address of ours in the line; empty when there is none.
std::u32string_view digitsOfAddress(std::u32string_view line) {
    constexpr std::u32string_view kStart = U"Desktop Connector running on http://";
    for (auto at = line.find(kStart); at != line.npos; at = line.find(kStart, at + 1)) {
        const std::u32string_view address = line.substr(at + kStart.size());
        for (const std::u32string_view host : {U"127.0.0.1:", U"localhost:"}) {
            if (address.starts_with(host) && !digitsOf(address.substr(host.size())).empty()) {
                return digitsOf(address.substr(host.size()));
            }
        }
    }
    return {};
}

/// The digits of a line that holds nothing but "PORT:" and them; empty for any other line.
std::u32string_view digitsOfPortLine(std::u32string_view line) {
    constexpr std::u32string_view kStart = U"PORT:";
    if (!line.starts_with(kStart)) {
        return {};
    }
    line.remove_prefix(kStart.size());
    while (!line.empty() && isSpace(line[0])) {
        line.remove_prefix(1);
    }
    return digitsOf(line).size() == line.size() ? line : std::u32string_view();
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
    const auto ofAddress = digitsOfAddress(line);
    if (!ofAddress.empty()) {
        return valueOf(ofAddress);
    }
    const auto ofPortLine = digitsOfPortLine(line);
    return ofPortLine.empty() ? std::nullopt : valueOf(ofPortLine);
}

} // namespace orvanta::fuzz
