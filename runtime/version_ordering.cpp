// SPDX-License-Identifier: MIT
#include "runtime/version_ordering.h"

#include <algorithm>
#include <optional>

namespace orvanta {

namespace {

bool isAsciiDigit(QChar c) {
    return c >= QLatin1Char('0') && c <= QLatin1Char('9');
}

/// The number that `text` is from its first to its last character; a sign may come first.
std::optional<std::int64_t> wholeNumber(const QString& text) {
    const bool hasSign = text.startsWith(QLatin1Char('+')) || text.startsWith(QLatin1Char('-'));
    const QStringView digits = QStringView(text).mid(hasSign ? 1 : 0);
    if (digits.isEmpty() || !std::all_of(digits.begin(), digits.end(), isAsciiDigit)) {
        return std::nullopt;
    }
    bool fits = false;
    const qlonglong number = text.toLongLong(&fits);
    return fits ? std::optional<std::int64_t>(number) : std::nullopt;
}

QString withoutOuterV(const QString& text) {
    qsizetype first = 0;
    qsizetype end = text.size();
    while (first < end && text.at(first) == QLatin1Char('v')) {
        ++first;
    }
    while (end > first && text.at(end - 1) == QLatin1Char('v')) {
        --end;
    }
    return text.mid(first, end - first);
}

/// The pieces around the first "-", empty ones dropped.
QStringList corePieces(const QString& text) {
    const qsizetype dash = text.indexOf(QLatin1Char('-'));
    QStringList pieces =
        dash < 0 ? QStringList{text} : QStringList{text.left(dash), text.mid(dash + 1)};
    pieces.removeAll(QString());
    return pieces;
}

int sign(bool isLess) {
    return isLess ? -1 : 1;
}

int compareIdentifiers(const QString& left, const QString& right) {
    const auto leftNumber = wholeNumber(left);
    const auto rightNumber = wholeNumber(right);
    if (leftNumber && rightNumber) {
        return *leftNumber == *rightNumber ? 0 : sign(*leftNumber < *rightNumber);
    }
    if (leftNumber || rightNumber) {
        return sign(leftNumber.has_value());
    }
    const int order = QString::compare(left, right, Qt::CaseInsensitive);
    return order == 0 ? 0 : sign(order < 0);
}

} // namespace

ParsedVersion parsedVersion(const QString& text) {
    const QStringList pieces = corePieces(withoutOuterV(text));
    ParsedVersion version;
    const QStringList core = pieces.value(0).split(QLatin1Char('.'), Qt::SkipEmptyParts);
    for (const QString& component : core) {
        version.core.push_back(wholeNumber(component).value_or(0));
    }
    version.prerelease = pieces.value(1).split(QLatin1Char('.'), Qt::SkipEmptyParts);
    return version;
}

int comparePrerelease(const QStringList& left, const QStringList& right) {
    if (left.isEmpty() != right.isEmpty()) {
        return left.isEmpty() ? 1 : -1;
    }
    const qsizetype shared = std::min(left.size(), right.size());
    for (qsizetype index = 0; index < shared; ++index) {
        const int order = compareIdentifiers(left.at(index), right.at(index));
        if (order != 0) {
            return order;
        }
    }
    return left.size() == right.size() ? 0 : sign(left.size() < right.size());
}

int compareVersions(const QString& left, const QString& right) {
    const ParsedVersion one = parsedVersion(left);
    const ParsedVersion other = parsedVersion(right);
    const std::size_t longest = std::max(one.core.size(), other.core.size());
    for (std::size_t index = 0; index < longest; ++index) {
        const std::int64_t ours = index < one.core.size() ? one.core[index] : 0;
        const std::int64_t theirs = index < other.core.size() ? other.core[index] : 0;
        if (ours != theirs) {
            return sign(ours < theirs);
        }
    }
    return comparePrerelease(one.prerelease, other.prerelease);
}

} // namespace orvanta
