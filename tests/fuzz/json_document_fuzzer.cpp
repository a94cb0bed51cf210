// SPDX-License-Identifier: MIT
// The parser against an independent one, and against the toolkit's where the two agree. The toolkit
//  - takes texts that are no JSON (".5", "1.", "\x", line feeds in strings): what it makes of such
//    a text, written anew, is JSON, and that is what has to be read the same;
//  - takes arrays, and up to 1024 levels;
//  - refuses numbers that no floating point number holds, too large or too near to zero;
//  - sorts keys in one order and looks them up in another, where some are beyond U+FFFF and others
//    just below: its members are gone through, not looked up;
//  - drops a byte order mark at the beginning of a string: no document that holds one is compared.
#include "base/json.h"
#include "base/json_parser.h"
#include "fuzz/fuzz_target.h"
#include "fuzz/plain_json.h"
#include "fuzz/plain_record.h"
#include "fuzz/plain_text.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace orvanta::fuzz {
namespace {

std::shared_ptr<const JsonObject> parsedIfPossible(const QByteArray& document) {
    try {
        return parseJsonObject(document);
    } catch (const JsonError& error) {
        require(!error.description().isEmpty(), "a refusal says why");
        return nullptr;
    }
}

bool isSame(const JsonObject& ours, const PlainValue& plain);

bool isSame(const JsonValue& ours, const PlainValue& plain) {
    switch (plain.kind) {
    case PlainKind::null:
        return std::holds_alternative<JsonNull>(ours);
    case PlainKind::boolean:
        return std::holds_alternative<bool>(ours) && std::get<bool>(ours) == plain.truth;
    case PlainKind::number:
        return std::holds_alternative<JsonNumber>(ours) &&
               std::get<JsonNumber>(ours).text.toStdString() == plain.number;
    case PlainKind::string:
        return std::holds_alternative<QString>(ours) &&
               std::get<QString>(ours).toStdU16String() == plain.string;
    case PlainKind::array:
        return std::holds_alternative<JsonArray>(ours);
    case PlainKind::object:
        break;
    }
    return std::holds_alternative<std::shared_ptr<const JsonObject>>(ours) &&
           isSame(*std::get<std::shared_ptr<const JsonObject>>(ours), plain);
}

bool isSame(const JsonObject& ours, const PlainValue& plain) {
    for (const auto& [key, value] : plain.members) {
        const auto member = ours.members.find(exactText(key));
        if (member == ours.members.end() || !isSame(member->second, *plain.find(key))) {
            return false;
        }
    }
    for (const auto& [key, value] : ours.members) {
        if (plain.find(key.toStdU16String()) == nullptr) {
            return false;
        }
    }
    return true;
}

bool isSame(const JsonObject& ours, const QJsonObject& theirs);

bool isSame(const JsonValue& ours, const QJsonValue& theirs) {
    switch (theirs.type()) {
    case QJsonValue::Null:
        return std::holds_alternative<JsonNull>(ours);
    case QJsonValue::Bool:
        return std::holds_alternative<bool>(ours) && std::get<bool>(ours) == theirs.toBool();
    case QJsonValue::Double:
        return std::holds_alternative<JsonNumber>(ours) &&
               std::get<JsonNumber>(ours).text.toDouble() == theirs.toDouble();
    case QJsonValue::String:
        return std::holds_alternative<QString>(ours) &&
               std::get<QString>(ours) == theirs.toString();
    case QJsonValue::Array:
        return std::holds_alternative<JsonArray>(ours);
    default:
        return std::holds_alternative<std::shared_ptr<const JsonObject>>(ours) &&
               isSame(*std::get<std::shared_ptr<const JsonObject>>(ours), theirs.toObject());
    }
}

bool isSame(const JsonObject& ours, const QJsonObject& theirs) {
    if (static_cast<qsizetype>(ours.members.size()) != theirs.size()) {
        return false;
    }
    for (auto member = theirs.constBegin(); member != theirs.constEnd(); ++member) {
        const auto value = ours.members.find(member.key());
        if (value == ours.members.end() || !isSame(value->second, *member)) {
            return false;
        }
    }
    return true;
}

/// Whether a number of the document is none that the toolkit holds.
bool hasExtremeNumber(const PlainValue& value) {
    if (value.kind == PlainKind::number) {
        const double number = std::strtod(value.number.c_str(), nullptr);
        const auto mantissa = value.number.substr(0, value.number.find_first_of("eE"));
        const bool isZero = mantissa.find_first_of("123456789") == mantissa.npos;
        return !std::isfinite(number) || (number == 0.0 && !isZero);
    }
    const auto isExtremeMember = [](const auto& member) { return hasExtremeNumber(member.value); };
    return std::any_of(value.elements.begin(), value.elements.end(), hasExtremeNumber) ||
           std::any_of(value.members.begin(), value.members.end(), isExtremeMember);
}

template <typename Read>
auto valueIfPossible(const Read& read) -> decltype(read()) {
    try {
        return read();
    } catch (const JsonError&) {
        return std::nullopt;
    }
}

/// The member "a", read as each kind of number.
void tryNumbers(const QByteArray& document) {
    const auto reader = JsonReader::parse(document);
    PlainRecord asInteger(document);
    const auto integer = asInteger.integer(u"a");
    require(valueIfPossible([&] { return reader.integer("a"); }) ==
                (asInteger.isValid() ? integer : std::nullopt),
            "an integer is read exactly or not at all");
    PlainRecord asNumber(document);
    const auto number = asNumber.number(u"a");
    require(valueIfPossible([&] { return reader.number("a"); }) ==
                (asNumber.isValid() ? number : std::nullopt),
            "a number is read as the nearest floating point number or not at all");
}

bool hasByteOrderMark(const QByteArray& text) {
    return text.contains("\xEF\xBB\xBF");
}

/// What the toolkit made of some text, written anew.
void tryRewritten(const QJsonDocument& theirs) {
    const QByteArray text = theirs.toJson(QJsonDocument::Compact);
    if (hasByteOrderMark(text)) {
        return;
    }
    const auto ours = parsedIfPossible(text);
    const bool isTooDeep = text.count('{') + text.count('[') > 512;
    require(ours != nullptr || isTooDeep, "what the toolkit writes is JSON");
    require(ours == nullptr || isSame(*ours, QJsonDocument::fromJson(text).object()),
            "what the toolkit writes is read as it was written");
}

} // namespace

void tryInput(const QByteArray& input) {
    const auto ours = parsedIfPossible(input);
    const auto plain = readPlainJson({input.constData(), static_cast<std::size_t>(input.size())});
    require((ours != nullptr) == plain.has_value(), "exactly JSON objects are read");
    const auto theirs = QJsonDocument::fromJson(input);
    if (theirs.isObject()) {
        tryRewritten(theirs);
    }
    if (ours == nullptr) {
        return;
    }
    require(isSame(*ours, *plain), "the content is read as it was written");
    tryNumbers(input);
    require(theirs.isObject() || hasExtremeNumber(*plain), "the toolkit reads it too");
    const bool isComparable = theirs.isObject() && !hasByteOrderMark(input);
    require(!isComparable || isSame(*ours, theirs.object()), "the toolkit reads the same");
}

} // namespace orvanta::fuzz
