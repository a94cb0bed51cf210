// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvanta::fuzz {

enum class PlainKind { null, boolean, number, string, array, object };

struct PlainMember;

/// One value of a JSON document, as it was written.
struct PlainValue {
    PlainKind kind = PlainKind::null;
    bool truth = false;
    std::string number;
    std::u16string string;
    std::vector<PlainValue> elements;
    std::vector<PlainMember> members; ///< in the order of writing

    /// The last member of that name.
    const PlainValue* find(std::u16string_view key) const;
};

struct PlainMember {
    std::u16string key;
    PlainValue value;
};

/// Reads a JSON document (RFC 8259) of at most 512 levels whose value is an object; an initial
/// byte order mark is skipped. Nothing for anything else. Written for the fuzzers alone, and
/// without the toolkit, so that its mistakes are its own.
std::optional<PlainValue> readPlainJson(std::string_view bytes);

} // namespace orvanta::fuzz
