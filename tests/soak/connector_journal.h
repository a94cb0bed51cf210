// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <sys/types.h>

namespace orvanta::soak {

/// Follows the journal that the demo connectors write, and keeps it short.
class ConnectorJournal {
public:
    explicit ConnectorJournal(QString path) : m_path(std::move(path)) {}

    /// Takes what has been written since.
    void read();
    /// Empties the file when it has grown; to be called when no connector is about to start, since
    /// what one writes at this very moment may be lost.
    void shorten();

    pid_t pid() const { return m_pid; } ///< of the connector that started last; 0 before the first
    int starts() const { return m_starts; }
    bool isListening() const { return m_isListening; }
    int port() const { return m_port; }                  ///< 0 until it listens
    const QString& version() const { return m_version; } ///< the name of its folder in the store
    const QString& restartUrl() const { return m_restartUrl; }

private:
    void take(const QByteArray& line);

    const QString m_path;
    qint64 m_position = 0;
    QByteArray m_unfinished;
    int m_starts = 0;
    pid_t m_pid = 0;
    bool m_isListening = false;
    int m_port = 0;
    QString m_version;
    QString m_restartUrl;
};

} // namespace orvanta::soak
