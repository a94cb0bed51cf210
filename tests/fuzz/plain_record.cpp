// SPDX-License-Identifier: MIT
#include "fuzz/plain_record.h"

#include "fuzz/plain_number.h"
#include "fuzz/plain_text.h"

#include <cmath>
#include <cstdlib>

namespace orvanta::fuzz {
namespace {

bool isHigh(char16_t unit) {
    return unit >= 0xD800 && unit < 0xDC00;
}

bool isLow(char16_t unit) {
    return unit >= 0xDC00 && unit < 0xE000;
}

/// Whether every half of a pair has the other.
bool isPaired(const std::u16string& text) {
    for (std::size_t index = 0; index < text.size(); ++index) {
        if (isLow(text[index])) {
            return false;
        }
        if (isHigh(text[index])) {
            ++index;
            if (index == text.size() || !isLow(text[index])) {
                return false;
            }
        }
    }
    return true;
}

} // namespace

PlainRecord::PlainRecord(const QByteArray& document) {
    auto object = readPlainJson({document.constData(), static_cast<std::size_t>(document.size())});
    m_isValid = object.has_value();
    m_object = std::move(object).value_or(PlainValue());
}

const PlainValue* PlainRecord::find(const char16_t* key, PlainKind kind) {
    const PlainValue* value = m_object.find(key);
    if (value == nullptr || value->kind == PlainKind::null) {
        return nullptr;
    }
    m_isValid = m_isValid && value->kind == kind;
    return value->kind == kind ? value : nullptr;
}

std::optional<QString> PlainRecord::text(const char16_t* key) {
    const PlainValue* value = find(key, PlainKind::string);
    if (value == nullptr) {
        return std::nullopt;
    }
    m_isValid = m_isValid && isPaired(value->string);
    return exactText(value->string);
}

QString PlainRecord::requiredText(const char16_t* key) {
    const auto value = text(key);
    m_isValid = m_isValid && value.has_value();
    return value.value_or(QString());
}

std::optional<bool> PlainRecord::boolean(const char16_t* key) {
    const PlainValue* value = find(key, PlainKind::boolean);
    return value == nullptr ? std::nullopt : std::optional(value->truth);
}

std::optional<std::int64_t> PlainRecord::integer(const char16_t* key) {
    const PlainValue* value = find(key, PlainKind::number);
    if (value == nullptr) {
        return std::nullopt;
    }
    const auto integer = plainInteger(value->number);
    m_isValid = m_isValid && integer.has_value();
    return integer;
}

std::optional<double> PlainRecord::number(const char16_t* key) {
    const PlainValue* value = find(key, PlainKind::number);
    if (value == nullptr) {
        return std::nullopt;
    }
    const double number = std::strtod(value->number.c_str(), nullptr);
    m_isValid = m_isValid && std::isfinite(number);
    return number;
}

} // namespace orvanta::fuzz
