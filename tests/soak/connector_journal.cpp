// SPDX-License-Identifier: MIT
#include "soak/connector_journal.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

namespace orvanta::soak {
namespace {

constexpr qint64 kLongest = 262'144;

} // namespace

void ConnectorJournal::read() {
    QFile file(m_path);
    if (!file.open(QIODevice::ReadOnly) || !file.seek(m_position)) {
        return;
    }
    const QByteArray bytes = file.readAll();
    m_position += bytes.size();
    QList<QByteArray> lines = (m_unfinished + bytes).split('\n');
    m_unfinished = lines.takeLast();
    for (const QByteArray& line : lines) {
        take(line);
    }
}

void ConnectorJournal::shorten() {
    read();
    if (m_position > kLongest && m_unfinished.isEmpty()) {
        QFile::resize(m_path, 0);
        m_position = 0;
    }
}

void ConnectorJournal::take(const QByteArray& line) {
    const QJsonObject entry = QJsonDocument::fromJson(line).object();
    const QString event = entry.value(QStringLiteral("event")).toString();
    const pid_t pid = entry.value(QStringLiteral("pid")).toInt();
    if (event == QStringLiteral("start")) {
        const QJsonObject variables = entry.value(QStringLiteral("environment")).toObject();
        ++m_starts;
        m_pid = pid;
        m_isListening = false;
        m_port = 0;
        m_version = variables.value(QStringLiteral("ORVANTA_RUNTIME_ROOT"))
                        .toString()
                        .section(QLatin1Char('/'), -2, -2);
        m_restartUrl = variables.value(QStringLiteral("ORVANTA_HOST_CONTROL_URL")).toString();
    } else if (event == QStringLiteral("listening") && pid == m_pid) {
        m_isListening = true;
        m_port = entry.value(QStringLiteral("port")).toInt();
    }
}

} // namespace orvanta::soak
