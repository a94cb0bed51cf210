// SPDX-License-Identifier: MIT
// Three versions, one a line: their order against an independent one, and that it is an order.
#include "fuzz/fuzz_target.h"
#include "fuzz/plain_text.h"
#include "fuzz/plain_version.h"
#include "runtime/version_ordering.h"

#include <algorithm>

namespace orvanta::fuzz {
namespace {

void tryParsing(const QString& text) {
    const ParsedVersion parsed = parsedVersion(text);
    const PlainVersion plain = plainVersion(text.toStdU16String());
    QStringList prerelease;
    for (const auto& identifier : plain.prerelease) {
        prerelease.append(exactText(identifier));
    }
    require(parsed == ParsedVersion{plain.core, prerelease},
            "a version is taken apart by the rules");
}

int orderOf(const QString& left, const QString& right) {
    const int result = compareVersions(left, right);
    require(result == comparePlainVersions(left.toStdU16String(), right.toStdU16String()),
            "two versions are ordered by the rules");
    return result;
}

} // namespace

void tryInput(const QByteArray& input) {
    const QStringList lines = QString::fromUtf8(input).split(u'\n');
    const QString one = lines.value(0);
    const QString two = lines.value(1);
    const QString three = lines.value(2);
    for (const QString& text : {one, two, three}) {
        tryParsing(text);
    }
    require(compareVersions(one, one) == 0, "a version equals itself");
    const int first = orderOf(one, two);
    const int second = orderOf(two, three);
    const int both = orderOf(one, three);
    require(compareVersions(two, one) == -first, "the other way round the order is reversed");
    const bool isChain = first <= 0 && second <= 0;
    require(!isChain || both == std::min(first, second), "the order is transitive");
}

} // namespace orvanta::fuzz
