// SPDX-License-Identifier: MIT
#include "base/json_parser.h"

#include "base/json.h"

#include <QStringDecoder>

namespace orvanta {
namespace {

constexpr int kMaximumDepth = 512;

bool isDigit(char16_t c) {
    return c >= u'0' && c <= u'9';
}

/// Whether it stands for itself in a string.
bool isPlain(char16_t c) {
    return c >= u' ' && c != u'"' && c != u'\\';
}

class Parser {
public:
    explicit Parser(QStringView text) : m_text(text) {}

    std::shared_ptr<const JsonObject> document() {
        skipSpace();
        auto object = parseObject();
        skipSpace();
        require(m_position == m_text.size());
        return object;
    }

private:
    void require(bool condition) const {
        if (!condition) {
            throw JsonError(QStringLiteral("The data is not a valid JSON object (character %1).")
                                .arg(m_position + 1));
        }
    }

    /// The next character; NUL, which is valid nowhere outside strings, at the end.
    char16_t peek() const {
        return m_position < m_text.size() ? m_text[m_position].unicode() : u'\0';
    }

    char16_t take() {
        require(m_position < m_text.size());
        return m_text[m_position++].unicode();
    }

    bool takeIf(char16_t expected) {
        if (peek() != expected) {
            return false;
        }
        ++m_position;
        return true;
    }

    void skipSpace() {
        while (peek() == u' ' || peek() == u'\t' || peek() == u'\n' || peek() == u'\r') {
            ++m_position;
        }
    }

    JsonValue parseValue() {
        switch (peek()) {
        case u'{':
            return parseObject();
        case u'[':
            return parseArray();
        case u'"':
            return parseString();
        case u't':
            return parseLiteral(u"true", true);
        case u'f':
            return parseLiteral(u"false", false);
        case u'n':
            return parseLiteral(u"null", JsonNull{});
        default:
            return parseNumber();
        }
    }

    JsonValue parseLiteral(QStringView spelling, JsonValue value) {
        require(m_text.sliced(m_position).startsWith(spelling));
        m_position += spelling.size();
        return value;
    }

    std::shared_ptr<const JsonObject> parseObject() {
        auto object = std::make_shared<JsonObject>();
        parseContainer(u'{', u'}', [&] {
            QString key = parseString();
            skipSpace();
            require(takeIf(u':'));
            skipSpace();
            object->members.insert_or_assign(std::move(key), parseValue());
        });
        return object;
    }

    JsonArray parseArray() {
        parseContainer(u'[', u']', [&] { parseValue(); });
        return {};
    }

    template <typename ParseElement>
    void parseContainer(char16_t open, char16_t close, const ParseElement& parseElement) {
        require(takeIf(open));
        require(++m_depth <= kMaximumDepth);
        skipSpace();
        if (!takeIf(close)) {
            do {
                skipSpace();
                parseElement();
                skipSpace();
            } while (takeIf(u','));
            require(takeIf(close));
        }
        --m_depth;
    }

    QString parseString() {
        require(takeIf(u'"'));
        QString string = takePlain().toString();
        while (!takeIf(u'"')) {
            require(take() == u'\\');
            string += QChar(parseEscape());
            string += takePlain();
        }
        return string;
    }

    QStringView takePlain() {
        const auto start = m_position;
        while (isPlain(peek())) {
            ++m_position;
        }
        return m_text.sliced(start, m_position - start);
    }

    char16_t parseEscape() {
        static constexpr QStringView kLetters = u"\"\\/bfnrt";
        static constexpr QStringView kMeanings = u"\"\\/\b\f\n\r\t";
        const char16_t letter = take();
        if (letter == u'u') {
            return parseHexadecimal();
        }
        const auto index = kLetters.indexOf(QChar(letter));
        require(index >= 0);
        return kMeanings[index].unicode();
    }

    char16_t parseHexadecimal() {
        char16_t value = 0;
        for (int i = 0; i < 4; ++i) {
            static constexpr QStringView kDigits = u"0123456789abcdef";
            const auto digit = kDigits.indexOf(QChar(take()), 0, Qt::CaseInsensitive);
            require(digit >= 0);
            value = static_cast<char16_t>(value * 16 + digit);
        }
        return value;
    }

    JsonNumber parseNumber() {
        const auto start = m_position;
        takeIf(u'-');
        if (!takeIf(u'0')) {
            skipDigits();
        }
        if (takeIf(u'.')) {
            skipDigits();
        }
        if (takeIf(u'e') || takeIf(u'E')) {
            if (!takeIf(u'+')) {
                takeIf(u'-');
            }
            skipDigits();
        }
        return {m_text.sliced(start, m_position - start).toString()};
    }

    void skipDigits() {
        require(isDigit(peek()));
        while (isDigit(peek())) {
            ++m_position;
        }
    }

    QStringView m_text;
    qsizetype m_position = 0;
    int m_depth = 0;
};

} // namespace

std::shared_ptr<const JsonObject> parseJsonObject(const QByteArray& bytes) {
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = decoder.decode(bytes);
    if (decoder.hasError()) {
        throw JsonError(QStringLiteral("The data is not valid UTF-8."));
    }
    return Parser(text).document();
}

} // namespace orvanta
