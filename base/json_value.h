// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <functional>
#include <map>
#include <memory>
#include <variant>

namespace orvanta {

struct JsonObject;

struct JsonNull {};

/// A number as it was written, so that no digit is lost before the reader knows what it is for.
struct JsonNumber {
    QString text;
};

/// Arrays are checked, but nobody reads any: their elements are not kept.
struct JsonArray {};

/// One decoded value. A string may hold unpaired surrogates, which escapes can spell.
using JsonValue =
    std::variant<JsonNull, bool, JsonNumber, QString, JsonArray, std::shared_ptr<const JsonObject>>;

struct JsonObject {
    /// To be looked up by literals, too.
    std::map<QString, JsonValue, std::less<>> members;
};

} // namespace orvanta
