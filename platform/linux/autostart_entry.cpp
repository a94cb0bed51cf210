// SPDX-License-Identifier: MIT
#include "platform/linux/autostart_entry.h"

#include <QList>

namespace orvanta {
namespace {

/// As desktop files write strings.
QByteArray escaped(const QByteArray& value) {
    QByteArray result = value;
    result.replace('\\', "\\\\").replace('\n', "\\n").replace('\t', "\\t").replace('\r', "\\r");
    return result;
}

QByteArray unescaped(const QByteArray& value) {
    QByteArray result;
    for (qsizetype index = 0; index < value.size(); ++index) {
        if (value[index] != '\\' || index + 1 == value.size()) {
            result += value[index];
            continue;
        }
        switch (const char code = value[++index]) {
        case 's':
            result += ' ';
            break;
        case 'n':
            result += '\n';
            break;
        case 't':
            result += '\t';
            break;
        case 'r':
            result += '\r';
            break;
        default:
            result += code;
        }
    }
    return result;
}

/// One argument of a command line, which is quoted first and escaped as a string afterwards.
QByteArray commandArgument(const QByteArray& argument) {
    QByteArray quoted = argument;
    for (const char special : {'\\', '"', '`', '$'}) {
        quoted.replace(special, QByteArray("\\") + special);
    }
    quoted.replace('%', "%%");
    return escaped('"' + quoted + '"');
}

void note(AutostartEntryFacts& facts, const QByteArray& key, const QByteArray& value) {
    if (key == "Hidden" && value == "true") {
        facts.isSwitchedOff = true;
    } else if (key == "X-GNOME-Autostart-enabled" && value == "false") {
        facts.isSwitchedOff = true;
    } else if (key == "TryExec" && !value.isEmpty()) {
        facts.tryExec = unescaped(value);
    }
}

} // namespace

QByteArray autostartEntry(const QByteArray& program) {
    return "[Desktop Entry]\n"
           "Type=Application\n"
           "Name=Orvanta\n"
           "Exec=" +
           commandArgument(program) +
           "\n"
           "TryExec=" +
           escaped(program) +
           "\n"
           "Terminal=false\n"
           "X-GNOME-Autostart-enabled=true\n";
}

AutostartEntryFacts readAutostartEntry(const QByteArray& text) {
    AutostartEntryFacts facts;
    bool isInEntry = false;
    for (const QByteArray& rawLine : text.split('\n')) {
        const QByteArray line = rawLine.trimmed();
        if (line.startsWith('[')) {
            isInEntry = line == "[Desktop Entry]";
        } else if (const auto equals = line.indexOf('='); isInEntry && equals > 0) {
            note(facts, line.left(equals).trimmed(), line.mid(equals + 1).trimmed());
        }
    }
    return facts;
}

} // namespace orvanta
