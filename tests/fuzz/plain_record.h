// SPDX-License-Identifier: MIT
#pragma once

#include "fuzz/plain_json.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <optional>
#include <utility>

namespace orvanta::fuzz {

/// What a strict reading of a record has to give. A member of the wrong type, a missing required
/// one or a broken document make `isValid` false; what was read is of no account then. Absent
/// members and null are the same.
class PlainRecord {
public:
    explicit PlainRecord(const QByteArray& document);

    bool isValid() const { return m_isValid; }

    std::optional<QString> text(const char16_t* key);
    QString requiredText(const char16_t* key);
    std::optional<bool> boolean(const char16_t* key);
    std::optional<std::int64_t> integer(const char16_t* key);
    std::optional<double> number(const char16_t* key);
    /// What `read` makes of the record at `key`; what is wrong in there is wrong in here.
    template <typename Read>
    auto record(const char16_t* key, const Read& read)
        -> std::optional<decltype(read(std::declval<PlainRecord&>()))> {
        const PlainValue* value = find(key, PlainKind::object);
        if (value == nullptr) {
            return std::nullopt;
        }
        PlainRecord inner(*value);
        auto result = read(inner);
        m_isValid = m_isValid && inner.isValid();
        return result;
    }

private:
    explicit PlainRecord(PlainValue object) : m_object(std::move(object)) {}

    const PlainValue* find(const char16_t* key, PlainKind kind);

    PlainValue m_object;
    bool m_isValid = true;
};

} // namespace orvanta::fuzz
