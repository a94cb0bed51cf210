// SPDX-License-Identifier: MIT
#include "app/character_width.h"

#include <QChar>

#include <algorithm>
#include <array>

namespace orvanta {
namespace {

struct Range {
    char32_t first;
    char32_t last;
};

/// Characters of two columns: East Asian wide and full width, and pictures. Gaps between
/// neighbouring pictures are included; one column too many does no harm.
constexpr std::array kWide = {
    Range{0x1100, 0x115F},   Range{0x231A, 0x231B},   Range{0x2329, 0x232A},
    Range{0x23E9, 0x23F3},   Range{0x25FD, 0x25FE},   Range{0x2614, 0x2615},
    Range{0x2648, 0x2653},   Range{0x267F, 0x267F},   Range{0x2693, 0x2693},
    Range{0x26A1, 0x26A1},   Range{0x26AA, 0x26AB},   Range{0x26BD, 0x26BE},
    Range{0x26C4, 0x26C5},   Range{0x26CE, 0x26CE},   Range{0x26D4, 0x26D4},
    Range{0x26EA, 0x26EA},   Range{0x26F2, 0x26FD},   Range{0x2705, 0x2705},
    Range{0x270A, 0x270B},   Range{0x2728, 0x2728},   Range{0x274C, 0x274E},
    Range{0x2753, 0x2757},   Range{0x2795, 0x2797},   Range{0x27B0, 0x27BF},
    Range{0x2B1B, 0x2B1C},   Range{0x2B50, 0x2B55},   Range{0x2E80, 0x303E},
    Range{0x3041, 0xA4CF},   Range{0xA960, 0xA97F},   Range{0xAC00, 0xD7A3},
    Range{0xF900, 0xFAFF},   Range{0xFE10, 0xFE19},   Range{0xFE30, 0xFE6F},
    Range{0xFF00, 0xFF60},   Range{0xFFE0, 0xFFE6},   Range{0x16FE0, 0x18DFF},
    Range{0x1AFF0, 0x1B2FF}, Range{0x1F004, 0x1F004}, Range{0x1F0CF, 0x1F0CF},
    Range{0x1F18E, 0x1F19A}, Range{0x1F200, 0x1F64F}, Range{0x1F680, 0x1F6FF},
    Range{0x1F7E0, 0x1F7F0}, Range{0x1F900, 0x1FAFF}, Range{0x20000, 0x3FFFD},
};

bool isWide(char32_t character) {
    const auto range =
        std::lower_bound(kWide.begin(), kWide.end(), character,
                         [](const Range& left, char32_t right) { return left.last < right; });
    return range != kWide.end() && range->first <= character;
}

/// Asks for a picture instead of a letter, which some terminals make one column wider for.
constexpr char32_t kPictureSelector = 0xFE0F;

} // namespace

int characterWidth(char32_t character) {
    if (character == kPictureSelector) {
        return 1;
    }
    switch (QChar::category(character)) {
    case QChar::Mark_NonSpacing:
    case QChar::Mark_Enclosing:
    case QChar::Other_Format:
        return 0;
    default:
        return isWide(character) ? 2 : 1;
    }
}

} // namespace orvanta
