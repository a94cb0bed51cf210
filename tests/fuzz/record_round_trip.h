// SPDX-License-Identifier: MIT
#pragma once

#include "base/json.h"
#include "fuzz/fuzz_target.h"
#include "fuzz/plain_json.h"

#include <QByteArray>

#include <algorithm>
#include <optional>

namespace orvanta::fuzz {

template <typename Record>
std::optional<Record> decodedIfPossible(const QByteArray& document) {
    try {
        return Record::decode(document);
    } catch (const JsonError&) {
        return std::nullopt;
    }
}

/// What is written is JSON in the one form of ours, and reads as the same record.
template <typename Record>
void tryRoundTrip(const Record& record) {
    const QByteArray written = record.encode();
    require(decodedIfPossible<Record>(written) == record, "what is written reads the same");
    const auto plain =
        readPlainJson({written.constData(), static_cast<std::size_t>(written.size())});
    require(plain.has_value(), "what is written is JSON");
    const auto& members = plain->members;
    const auto isBefore = [](const auto& one, const auto& other) { return one.key < other.key; };
    require(std::is_sorted(members.begin(), members.end(), isBefore), "the members are sorted");
    require(std::none_of(members.begin(), members.end(),
                         [](const auto& member) { return member.value.kind == PlainKind::null; }),
            "a member without a value is left out");
    require(written.count('\n') == static_cast<qsizetype>(members.size()) + 1,
            "each member has a line of its own");
}

} // namespace orvanta::fuzz
