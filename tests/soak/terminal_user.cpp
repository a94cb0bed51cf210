// SPDX-License-Identifier: MIT
#include "soak/terminal_user.h"

namespace orvanta::soak {
namespace {

constexpr int kKeptLines = 60;
constexpr int kWriteLimitMs = 1'000;
const QString kRuntime = QStringLiteral("Runtime: ");
const QString kUnavailable = QStringLiteral(" (unavailable)");

} // namespace

QProcessEnvironment TerminalUser::prepare(const QString&, const QProcessEnvironment& environment) {
    return environment;
}

void TerminalUser::look() {
    QList<QByteArray> lines = (m_unfinished + m_tray->readAllStandardOutput()).split('\n');
    m_unfinished = lines.takeLast();
    for (const QByteArray& line : lines) {
        take(QString::fromUtf8(line).trimmed());
    }
}

/// Of the menu, only what has changed is printed. An entry is a number, two spaces and its text.
void TerminalUser::take(const QString& line) {
    m_lastLines.append(line);
    if (m_lastLines.size() > kKeptLines) {
        m_lastLines.removeFirst();
    }
    for (const QString& heading : {QStringLiteral("Status: "), kRuntime}) {
        if (line.startsWith(heading)) {
            m_said.insert(heading, line.mid(heading.size()));
        }
    }
    bool isNumber = false;
    line.section(QLatin1Char(' '), 0, 0).toInt(&isNumber);
    if (isNumber) {
        QString entry = line.section(QStringLiteral("  "), 1);
        const bool isUnavailable = entry.endsWith(kUnavailable);
        entry.chop(isUnavailable ? kUnavailable.size() : 0);
        m_canChoose.insert(entry, !isUnavailable);
    }
}

void TerminalUser::type(const QString& text) {
    m_tray->write(text.toUtf8() + '\n');
    m_tray->waitForBytesWritten(kWriteLimitMs);
}

void TerminalUser::choose(const QString& entry) {
    m_said.remove(kRuntime);
    type(entry);
}

void TerminalUser::disturb() {
    type(QStringLiteral("99"));
    type(QString(5'000, QLatin1Char('x')));
    type(QString());
}

QString TerminalUser::scene() const {
    return m_lastLines.join(QLatin1Char('\n'));
}

} // namespace orvanta::soak
