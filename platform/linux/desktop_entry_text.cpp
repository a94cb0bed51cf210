// SPDX-License-Identifier: MIT
#include "platform/linux/desktop_entry_text.h"

#include <optional>

namespace orvanta {
namespace {

char meaningOfEscape(char code) {
    switch (code) {
    case 's':
        return ' ';
    case 'n':
        return '\n';
    case 't':
        return '\t';
    case 'r':
        return '\r';
    default:
        return code;
    }
}

QByteArray unescaped(const QByteArray& value) {
    QByteArray text;
    for (qsizetype index = 0; index < value.size(); ++index) {
        const bool isEscape = value[index] == '\\' && index + 1 < value.size();
        text += isEscape ? meaningOfEscape(value[++index]) : value[index];
    }
    return text;
}

/// Takes a command line apart, character by character.
class ArgumentSplitter {
public:
    explicit ArgumentSplitter(const QByteArray& line) : m_line(line) {}

    QByteArrayList split() {
        while (m_index < m_line.size()) {
            take(m_line[m_index++]);
        }
        endArgument();
        return m_arguments;
    }

private:
    void take(char character) {
        if (character == '"') {
            m_isQuoted = !m_isQuoted;
            begin();
        } else if (character == '%' && m_index < m_line.size()) {
            takeFieldCode(m_line[m_index++]);
        } else if (character == '\\' && m_index < m_line.size()) {
            append(m_line[m_index++]);
        } else if ((character == ' ' || character == '\t') && !m_isQuoted) {
            endArgument();
        } else {
            append(character);
        }
    }

    void takeFieldCode(char code) {
        if (code == '%') {
            append(code);
        }
    }

    void begin() {
        if (!m_argument) {
            m_argument.emplace();
        }
    }

    void append(char character) {
        begin();
        m_argument->append(character);
    }

    void endArgument() {
        if (m_argument) {
            m_arguments.append(*m_argument);
            m_argument.reset();
        }
    }

    const QByteArray m_line;
    qsizetype m_index = 0;
    bool m_isQuoted = false;
    std::optional<QByteArray> m_argument; ///< an empty one has been quoted
    QByteArrayList m_arguments;
};

} // namespace

QByteArray escapedValue(const QByteArray& text) {
    QByteArray value = text;
    value.replace('\\', "\\\\").replace('\n', "\\n").replace('\t', "\\t").replace('\r', "\\r");
    return value;
}

QByteArray quotedArgument(const QByteArray& argument) {
    QByteArray quoted = argument;
    for (const char special : {'\\', '"', '`', '$'}) {
        quoted.replace(special, QByteArray("\\") + special);
    }
    quoted.replace('%', "%%");
    return '"' + quoted + '"';
}

QByteArrayList commandArguments(const QByteArray& line) {
    return ArgumentSplitter(line).split();
}

QMap<QByteArray, QByteArray> desktopEntryKeys(const QByteArray& text) {
    QMap<QByteArray, QByteArray> keys;
    bool isInEntry = false;
    for (const QByteArray& rawLine : text.split('\n')) {
        const QByteArray line = rawLine.trimmed();
        if (line.startsWith('[')) {
            isInEntry = line == "[Desktop Entry]";
        } else if (const auto equals = line.indexOf('='); isInEntry && equals > 0) {
            keys.insert(line.left(equals).trimmed(), unescaped(line.mid(equals + 1).trimmed()));
        }
    }
    return keys;
}

} // namespace orvanta
