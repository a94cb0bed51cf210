// SPDX-License-Identifier: MIT
#pragma once

#include "base/platform_error.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <memory>
#include <optional>

namespace orvanta {

struct JsonObject;

/// A document that is no JSON object, or one with a member of the wrong type.
class JsonError : public PlatformError {
public:
    explicit JsonError(const QString& description)
        : PlatformError(QStringLiteral("json"), 1, description) {}
};

/// Reads the members of a JSON object strictly: no conversion between types ever happens. An
/// absent member and null are the same; members nobody asks for are ignored. Of a member that
/// stands twice the last one counts. Copies share the decoded document.
class JsonReader {
public:
    /// Throws `JsonError` unless `bytes` are one JSON object in UTF-8 and nothing else.
    static JsonReader parse(const QByteArray& bytes);

    /// Each gives nothing for an absent member or null, and throws `JsonError` for a member of
    /// another type. Keys are ASCII.
    std::optional<QString> string(const char* key) const;
    std::optional<bool> boolean(const char* key) const;
    /// The nearest 64-bit floating point number; an error when there is no finite one.
    std::optional<double> number(const char* key) const;
    /// A number without a fraction (3001, 3001.0 and 3e3, not 3001.5) that fits 64 bits, signed.
    /// Never rounded.
    std::optional<std::int64_t> integer(const char* key) const;
    std::optional<JsonReader> object(const char* key) const;

    /// As `string`, but an absent member is an error too.
    QString requiredString(const char* key) const;

private:
    explicit JsonReader(std::shared_ptr<const JsonObject> object) : m_object(std::move(object)) {}

    std::shared_ptr<const JsonObject> m_object;
};

} // namespace orvanta
