// SPDX-License-Identifier: MIT
#include "fuzz/plain_json.h"

#include "fuzz/plain_text.h"

#include <algorithm>
#include <utility>

namespace orvanta::fuzz {
namespace {

constexpr int kMostLevels = 512;

/// Each operation takes its construct from the front of the bytes and answers whether it was there.
class Reader {
public:
    explicit Reader(std::string_view bytes) : m_rest(bytes) {}

    bool document(PlainValue& value) {
        space();
        if (!object(value, 1)) {
            return false;
        }
        space();
        return m_rest.empty();
    }

private:
    bool take(std::string_view expected) {
        if (!m_rest.starts_with(expected)) {
            return false;
        }
        m_rest.remove_prefix(expected.size());
        return true;
    }

    void space() {
        m_rest.remove_prefix(std::min(m_rest.find_first_not_of(" \t\r\n"), m_rest.size()));
    }

    bool value(PlainValue& value, int level) {
        if (take("null")) {
            return true;
        }
        value.truth = m_rest.starts_with("true");
        if (take("true") || take("false")) {
            value.kind = PlainKind::boolean;
            return true;
        }
        switch (m_rest.empty() ? '\0' : m_rest[0]) {
        case '"':
            return string(value);
        case '[':
            return array(value, level);
        case '{':
            return object(value, level);
        default:
            return number(value);
        }
    }

    bool string(PlainValue& value) {
        value.kind = PlainKind::string;
        return quoted(value.string);
    }

    bool quoted(std::u16string& text) {
        if (!take("\"")) {
            return false;
        }
        while (!take("\"")) {
            if (m_rest.empty() || static_cast<unsigned char>(m_rest[0]) < 0x20) {
                return false;
            }
            if (take("\\")) {
                if (!escape(text)) {
                    return false;
                }
                continue;
            }
            const auto decoded = decodeCharacter(m_rest);
            appendUtf16(text, decoded->character);
            m_rest.remove_prefix(decoded->length);
        }
        return true;
    }

    bool escape(std::u16string& text) {
        constexpr std::pair<std::string_view, char16_t> kEscapes[] = {
            {"\"", u'"'}, {"\\", u'\\'}, {"/", u'/'},  {"b", u'\b'},
            {"f", u'\f'}, {"n", u'\n'},  {"r", u'\r'}, {"t", u'\t'}};
        for (const auto& [spelling, meaning] : kEscapes) {
            if (take(spelling)) {
                text += meaning;
                return true;
            }
        }
        if (!take("u") || m_rest.size() < 4 ||
            m_rest.substr(0, 4).find_first_not_of("0123456789abcdefABCDEF") != m_rest.npos) {
            return false;
        }
        text += static_cast<char16_t>(std::stoi(std::string(m_rest.substr(0, 4)), nullptr, 16));
        m_rest.remove_prefix(4);
        return true;
    }

    bool digits() {
        const auto end = std::min(m_rest.find_first_not_of("0123456789"), m_rest.size());
        m_rest.remove_prefix(end);
        return end > 0;
    }

    bool number(PlainValue& value) {
        const std::string_view start = m_rest;
        value.kind = PlainKind::number;
        take("-");
        if (!take("0") && !digits()) {
            return false;
        }
        if (take(".") && !digits()) {
            return false;
        }
        if ((take("e") || take("E")) && ((take("+") || take("-")), !digits())) {
            return false;
        }
        value.number = start.substr(0, start.size() - m_rest.size());
        return true;
    }

    bool array(PlainValue& value, int level) {
        value.kind = PlainKind::array;
        return list("[", "]", level,
                    [&] { return this->value(value.elements.emplace_back(), level + 1); });
    }

    bool object(PlainValue& value, int level) {
        value.kind = PlainKind::object;
        return list("{", "}", level, [&] {
            auto& [key, member] = value.members.emplace_back();
            if (!quoted(key)) {
                return false;
            }
            space();
            if (!take(":")) {
                return false;
            }
            space();
            return this->value(member, level + 1);
        });
    }

    template <typename Element>
    bool list(const char* open, const char* close, int level, const Element& element) {
        if (level > kMostLevels || !take(open)) {
            return false;
        }
        space();
        if (take(close)) {
            return true;
        }
        do {
            space();
            if (!element()) {
                return false;
            }
            space();
        } while (take(","));
        return take(close);
    }

    std::string_view m_rest;
};

} // namespace

const PlainValue* PlainValue::find(std::u16string_view key) const {
    for (auto member = members.rbegin(); member != members.rend(); ++member) {
        if (member->key == key) {
            return &member->value;
        }
    }
    return nullptr;
}

std::optional<PlainValue> readPlainJson(std::string_view bytes) {
    if (!isUtf8(bytes)) {
        return std::nullopt;
    }
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    if (bytes.starts_with(kByteOrderMark)) {
        bytes.remove_prefix(kByteOrderMark.size());
    }
    PlainValue value;
    return Reader(bytes).document(value) ? std::optional(std::move(value)) : std::nullopt;
}

} // namespace orvanta::fuzz
