// SPDX-License-Identifier: MIT
#include "base/json_writer.h"

namespace orvanta {
namespace {

void appendControl(QByteArray& encoded, char c) {
    static constexpr QByteArrayView kControls = "\b\f\n\r\t";
    static constexpr QByteArrayView kLetters = "bfnrt";
    static constexpr QByteArrayView kDigits = "0123456789abcdef";
    if (const auto index = kControls.indexOf(c); index >= 0) {
        encoded += '\\';
        encoded += kLetters[index];
    } else {
        encoded += "\\u00";
        encoded += kDigits[c / 16];
        encoded += kDigits[c % 16];
    }
}

QByteArray encodeString(const QString& value) {
    const QByteArray bytes = value.toUtf8();
    QByteArray encoded;
    encoded.reserve(bytes.size() + 2);
    encoded += '"';
    for (const char c : bytes) {
        if (static_cast<unsigned char>(c) < ' ') {
            appendControl(encoded, c);
            continue;
        }
        if (c == '"' || c == '\\' || c == '/') {
            encoded += '\\';
        }
        encoded += c;
    }
    encoded += '"';
    return encoded;
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
        encoded += separator;
        encoded += "  \"";
        encoded += key;
        encoded += "\" : ";
        encoded += value;
        separator = ",\n";
    }
    encoded += "\n}";
    return encoded;
}

} // namespace orvanta
