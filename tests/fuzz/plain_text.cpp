// SPDX-License-Identifier: MIT
#include "fuzz/plain_text.h"

namespace orvanta::fuzz {
namespace {

/// How many bytes a character takes that begins with `first`; 0 for what begins none.
std::size_t lengthFor(unsigned char first) {
    if (first < 0x80) {
        return 1;
    }
    if (first >= 0xC2 && first < 0xE0) {
        return 2;
    }
    if (first >= 0xE0 && first < 0xF0) {
        return 3;
    }
    return first >= 0xF0 && first < 0xF5 ? 4 : 0;
}

/// The smallest character that needs `length` bytes.
char32_t smallestWith(std::size_t length) {
    constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
    return kSmallest[length];
}

} // namespace

std::optional<DecodedCharacter> decodeCharacter(std::string_view bytes) {
    if (bytes.empty()) {
        return std::nullopt;
    }
    const auto first = static_cast<unsigned char>(bytes[0]);
    const std::size_t length = lengthFor(first);
    if (length == 0 || length > bytes.size()) {
        return std::nullopt;
    }
    char32_t character = length == 1 ? first : first & (0x7Fu >> length);
    for (std::size_t index = 1; index < length; ++index) {
        const auto next = static_cast<unsigned char>(bytes[index]);
        if ((next & 0xC0u) != 0x80u) {
            return std::nullopt;
        }
        character = character << 6 | (next & 0x3Fu);
    }
    const bool isSurrogate = character >= 0xD800 && character < 0xE000;
    if (character < smallestWith(length) || isSurrogate || character > 0x10FFFF) {
        return std::nullopt;
    }
    return DecodedCharacter{character, length};
}

bool isUtf8(std::string_view bytes) {
    while (!bytes.empty()) {
        const auto decoded = decodeCharacter(bytes);
        if (!decoded) {
            return false;
        }
        bytes.remove_prefix(decoded->length);
    }
    return true;
}

std::u32string decodeLeniently(std::string_view bytes) {
    std::u32string text;
    while (!bytes.empty()) {
        const auto decoded = decodeCharacter(bytes).value_or(DecodedCharacter{0xFFFD, 1});
        text += decoded.character;
        bytes.remove_prefix(decoded.length);
    }
    return text;
}

QString exactText(const std::u16string& text) {
    return QString(reinterpret_cast<const QChar*>(text.data()),
                   static_cast<qsizetype>(text.size()));
}

void appendUtf16(std::u16string& text, char32_t character) {
    if (character < 0x10000) {
        text += static_cast<char16_t>(character);
    } else {
        text += static_cast<char16_t>(0xD800 + ((character - 0x10000) >> 10));
        text += static_cast<char16_t>(0xDC00 + ((character - 0x10000) & 0x3FF));
    }
}

} // namespace orvanta::fuzz
