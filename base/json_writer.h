// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

#include <map>
#include <optional>

namespace orvanta {

/// Writes a flat JSON object for people and programs: two-space indentation, one member per line,
/// sorted by the bytes of the keys, "/" as "\/", no line feed at the end. A member without a value
/// is left out.
class JsonWriter {
public:
    void add(const char* key, const QString& value);
    void add(const char* key, const std::optional<QString>& value);
    void add(const char* key, std::optional<bool> value);
    /// A literal would otherwise turn into `true`.
    void add(const char* key, const char* value) = delete;

    /// UTF-8.
    QByteArray encode() const;

private:
    /// Both already encoded.
    std::map<QByteArray, QByteArray> m_members;
};

} // namespace orvanta
