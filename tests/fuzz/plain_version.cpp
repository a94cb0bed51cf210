// SPDX-License-Identifier: MIT
#include "fuzz/plain_version.h"

#include "fuzz/plain_number.h"
#include "fuzz/plain_text.h"

#include <QList>
#include <QString>

#include <algorithm>
#include <optional>

namespace orvanta::fuzz {
namespace {

std::optional<std::int64_t> numberIn(const std::u16string& text) {
    const bool hasSign = text.starts_with(u'-') || text.starts_with(u'+');
    std::string digits;
    for (const char16_t unit : text.substr(hasSign ? 1 : 0)) {
        if (unit < u'0' || unit > u'9') {
            return std::nullopt;
        }
        digits += static_cast<char>(unit);
    }
    return digits.empty() ? std::nullopt : plainDigits(text.starts_with(u'-'), digits);
}

std::vector<std::u16string> piecesBetweenPoints(const std::u16string& text) {
    std::vector<std::u16string> pieces(1);
    for (const char16_t unit : text) {
        if (unit == u'.') {
            pieces.emplace_back();
        } else {
            pieces.back() += unit;
        }
    }
    std::erase(pieces, u"");
    return pieces;
}

int order(const auto& left, const auto& right) {
    return left < right ? -1 : left > right ? 1 : 0;
}

int compareIdentifiers(const std::u16string& left, const std::u16string& right) {
    const auto leftNumber = numberIn(left);
    const auto rightNumber = numberIn(right);
    if (leftNumber && rightNumber) {
        return order(*leftNumber, *rightNumber);
    }
    if (leftNumber) {
        return -1;
    }
    if (rightNumber) {
        return 1;
    }
    const auto folded = [](const std::u16string& text) {
        QString result;
        for (const char32_t character : exactText(text).toUcs4()) {
            result += QChar::fromUcs4(QChar::toCaseFolded(character));
        }
        return result.toStdU16String();
    };
    return order(folded(left), folded(right));
}

int comparePrereleases(const PlainVersion& left, const PlainVersion& right) {
    if (left.prerelease.empty() || right.prerelease.empty()) {
        return order(left.prerelease.empty(), right.prerelease.empty());
    }
    for (std::size_t index = 0;; ++index) {
        const bool leftEnds = index == left.prerelease.size();
        const bool rightEnds = index == right.prerelease.size();
        if (leftEnds || rightEnds) {
            return order(rightEnds, leftEnds);
        }
        const int result = compareIdentifiers(left.prerelease[index], right.prerelease[index]);
        if (result != 0) {
            return result;
        }
    }
}

} // namespace

PlainVersion plainVersion(const std::u16string& text) {
    std::u16string rest = text;
    while (rest.starts_with(u'v')) {
        rest.erase(0, 1);
    }
    while (rest.ends_with(u'v')) {
        rest.pop_back();
    }
    const auto dash = rest.find(u'-');
    std::u16string core = rest.substr(0, dash);
    std::u16string prerelease = dash == rest.npos ? u"" : rest.substr(dash + 1);
    if (core.empty()) {
        std::swap(core, prerelease);
    }
    PlainVersion version;
    for (const auto& piece : piecesBetweenPoints(core)) {
        version.core.push_back(numberIn(piece).value_or(0));
    }
    version.prerelease = piecesBetweenPoints(prerelease);
    return version;
}

int comparePlainVersions(const std::u16string& left, const std::u16string& right) {
    PlainVersion one = plainVersion(left);
    PlainVersion other = plainVersion(right);
    const auto longest = std::max(one.core.size(), other.core.size());
    one.core.resize(longest);
    other.core.resize(longest);
    return one.core == other.core ? comparePrereleases(one, other) : order(one.core, other.core);
}

} // namespace orvanta::fuzz
