// SPDX-License-Identifier: MIT
#include "base/json_writer.h"

namespace orvanta {
namespace {

QByteArray encodeControl(char c) {
    switch (c) {
    case '\b':
        return "\\b";
    case '\f':
        return "\\f";
    case '\n':
        return "\\n";
    case '\r':
        return "\\r";
    case '\t':
        return "\\t";
    default:
        return "\\u" + QByteArray::number(static_cast<uint>(c), 16).rightJustified(4, '0');
    }
}

QByteArray encodeString(const QString& value) {
    QByteArray encoded = "\"";
    for (const char c : value.toUtf8()) {
        if (c == '"' || c == '\\' || c == '/') {
            encoded += '\\';
            encoded += c;
        } else if (static_cast<unsigned char>(c) < ' ') {
            encoded += encodeControl(c);
        } else {
            encoded += c;
        }
    }
    return encoded + '"';
}

} // namespace

void JsonWriter::add(const char* key, const QString& value) {
    m_members[key] = encodeString(value);
}

void JsonWriter::add(const char* key, const std::optional<QString>& value) {
    if (value) {
        add(key, *value);
    }
}

void JsonWriter::add(const char* key, std::optional<bool> value) {
    if (value) {
        m_members[key] = *value ? "true" : "false";
    }
}

QByteArray JsonWriter::encode() const {
    QByteArray encoded = "{";
    const char* separator = "\n";
    for (const auto& [key, value] : m_members) {
        encoded += separator + ("  \"" + key + "\" : ") + value;
        separator = ",\n";
    }
    return encoded + "\n}";
}

} // namespace orvanta
