// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <optional>
#include <string>
#include <string_view>

namespace orvanta::fuzz {

/// The character that begins `bytes` and its length in bytes; nothing unless it is valid UTF-8.
struct DecodedCharacter {
    char32_t character;
    std::size_t length;
};
std::optional<DecodedCharacter> decodeCharacter(std::string_view bytes);

bool isUtf8(std::string_view bytes);

/// `bytes` decoded; each byte that belongs to no valid character becomes U+FFFD.
std::u32string decodeLeniently(std::string_view bytes);

/// `text` unit by unit; the toolkit's own conversion takes a byte order mark off.
QString exactText(const std::u16string& text);

void appendUtf16(std::u16string& text, char32_t character);

} // namespace orvanta::fuzz
