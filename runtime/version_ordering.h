// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

#include <cstdint>
#include <vector>

namespace orvanta {

/// A runtime version taken apart. Versions are free text; whatever cannot be read counts as 0.
struct ParsedVersion {
    std::vector<std::int64_t> core; ///< the dotted numbers before the first "-"
    QStringList prerelease;         ///< the dotted identifiers after it

    bool operator==(const ParsedVersion&) const = default;
};

/// Never fails. A "v" at either end is dropped; there is no rule for build metadata.
ParsedVersion parsedVersion(const QString& text);

/// -1, 0 or 1: a release ranks above every prerelease, numbers below words, words are compared
/// without regard to letter case, fewer identifiers rank below more.
int comparePrerelease(const QStringList& left, const QStringList& right);

/// The one ordering of runtime versions: -1 when `left` is older, 0 when they are equal, 1 when
/// `left` is newer. Missing components count as 0. Close to semantic versioning, but not the same.
int compareVersions(const QString& left, const QString& right);

} // namespace orvanta
