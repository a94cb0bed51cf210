// SPDX-License-Identifier: MIT
#include "base/json_writer.h"

#include <algorithm>

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

/// Whether it stands for itself in a string.
bool isPlain(char c) {
    return static_cast<unsigned char>(c) >= ' ' && c != '"' && c != '\\' && c != '/';
}

void appendEscaped(QByteArray& encoded, char c) {
    if (static_cast<unsigned char>(c) < ' ') {
        appendControl(encoded, c);
    } else {
        encoded += '\\';
        encoded += c;
    }
}

QByteArray encodeString(const QString& value) {
    const QByteArray bytes = value.toUtf8();
    QByteArray encoded;
    encoded.reserve(bytes.size() + 2);
    encoded += '"';
    for (auto rest = bytes.begin(); rest != bytes.end();) {
        const auto special = std::find_if_not(rest, bytes.end(), isPlain);
        encoded += QByteArrayView(rest, special);
        rest = special;
        if (rest != bytes.end()) {
            appendEscaped(encoded, *rest++);
        }
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
