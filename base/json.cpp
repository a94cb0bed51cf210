// SPDX-License-Identifier: MIT
#include "base/json.h"

#include "base/json_parser.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace orvanta {
namespace {

[[noreturn]] void failFor(const char* key, const QString& reason) {
    throw JsonError(QStringLiteral("The value of “%1” is %2.").arg(QLatin1String(key), reason));
}

/// The member as a `Value`; nothing when it is absent or null.
template <typename Value>
const Value* find(const JsonObject& object, const char* key, const QString& reason) {
    const auto member = object.members.find(QLatin1String(key));
    if (member == object.members.end() || std::holds_alternative<JsonNull>(member->second)) {
        return nullptr;
    }
    if (!std::holds_alternative<Value>(member->second)) {
        failFor(key, reason);
    }
    return &std::get<Value>(member->second);
}

/// A valid JSON number as sign, digits without point, and the power of ten they are worth.
struct Decimal {
    bool isNegative = false;
    QString digits;
    std::int64_t exponent = 0;
};

Decimal parseDecimal(const QString& text) {
    Decimal decimal;
    decimal.isNegative = text.startsWith(u'-');
    const QStringView unsignedText = QStringView(text).sliced(decimal.isNegative ? 1 : 0);
    const auto exponentAt = unsignedText.indexOf(u'e', 0, Qt::CaseInsensitive);
    decimal.digits =
        unsignedText.first(exponentAt < 0 ? unsignedText.size() : exponentAt).toString();
    if (exponentAt >= 0) {
        const QStringView exponent = unsignedText.sliced(exponentAt + 1);
        bool ok = false;
        decimal.exponent = exponent.toInt(&ok);
        if (!ok) {
            // Out of all bounds, which only a zero survives.
            decimal.exponent = exponent.startsWith(u'-') ? std::numeric_limits<int>::min()
                                                         : std::numeric_limits<int>::max();
        }
    }
    const auto point = decimal.digits.indexOf(u'.');
    if (point >= 0) {
        decimal.digits.remove(point, 1);
        decimal.exponent -= decimal.digits.size() - point;
    }
    return decimal;
}

/// The exact value of a valid JSON number, or nothing when it has a fraction or is out of range.
std::optional<std::int64_t> exactInteger(const QString& text) {
    auto decimal = parseDecimal(text);
    QString& digits = decimal.digits;
    while (digits.endsWith(u'0')) {
        digits.chop(1);
        ++decimal.exponent;
    }
    const auto firstDigit =
        std::find_if(digits.cbegin(), digits.cend(), [](QChar c) { return c != u'0'; });
    digits = digits.sliced(firstDigit - digits.cbegin());
    if (digits.isEmpty()) {
        return 0;
    }
    constexpr int kMostDigits = 19;
    if (decimal.exponent < 0 || digits.size() + decimal.exponent > kMostDigits) {
        return std::nullopt;
    }
    digits.append(QString(static_cast<qsizetype>(decimal.exponent), u'0'));
    bool ok = false;
    const auto value = (decimal.isNegative ? u'-' + digits : digits).toLongLong(&ok);
    return ok ? std::optional<std::int64_t>(value) : std::nullopt;
}

} // namespace

JsonReader JsonReader::parse(const QByteArray& bytes) {
    return JsonReader(parseJsonObject(bytes));
}

std::optional<QString> JsonReader::string(const char* key) const {
    const auto* value = find<QString>(*m_object, key, QStringLiteral("not a string"));
    if (value == nullptr) {
        return std::nullopt;
    }
    if (!value->isValidUtf16()) {
        failFor(key, QStringLiteral("not valid text"));
    }
    return *value;
}

std::optional<bool> JsonReader::boolean(const char* key) const {
    const auto* value = find<bool>(*m_object, key, QStringLiteral("not true or false"));
    return value == nullptr ? std::nullopt : std::optional<bool>(*value);
}

std::optional<double> JsonReader::number(const char* key) const {
    const auto* value = find<JsonNumber>(*m_object, key, QStringLiteral("not a number"));
    if (value == nullptr) {
        return std::nullopt;
    }
    // Zero for what is too small to tell from it, an infinity for what is too large.
    const double number = value->text.toDouble();
    if (!std::isfinite(number)) {
        failFor(key, QStringLiteral("out of range"));
    }
    return number;
}

std::optional<std::int64_t> JsonReader::integer(const char* key) const {
    const QString reason = QStringLiteral("not an integer");
    const auto* value = find<JsonNumber>(*m_object, key, reason);
    if (value == nullptr) {
        return std::nullopt;
    }
    const auto integer = exactInteger(value->text);
    if (!integer) {
        failFor(key, reason);
    }
    return integer;
}

std::optional<JsonReader> JsonReader::object(const char* key) const {
    const auto* value =
        find<std::shared_ptr<const JsonObject>>(*m_object, key, QStringLiteral("not an object"));
    return value == nullptr ? std::nullopt : std::optional<JsonReader>(JsonReader(*value));
}

QString JsonReader::requiredString(const char* key) const {
    const auto value = string(key);
    if (!value) {
        failFor(key, QStringLiteral("missing"));
    }
    return *value;
}

} // namespace orvanta
