// SPDX-License-Identifier: MIT
#pragma once

#include "desktop/session_bus.h"

#include <QList>
#include <QProcess>
#include <QStringList>

namespace orvanta::tests {

/// Overhears everything that is said on a bus, by whomever.
class BusMonitor {
public:
    struct Message {
        QString type; ///< "sig", "mc" (call), "mr" (reply) or "err"
        QString sender;
        QString destination; ///< empty for what is sent to all
        QString member;      ///< empty for replies
    };

    /// Starts listening.
    explicit BusMonitor(const QString& address);
    ~BusMonitor();
    BusMonitor(const BusMonitor&) = delete;
    BusMonitor& operator=(const BusMonitor&) = delete;

    /// Waits until everything sent before this call has been overheard; false when the monitor
    /// does not work.
    bool catchUp();
    /// Forgets what was overheard so far.
    void forget();
    /// What `sender`, a unique name, has said.
    QList<Message> from(const QString& sender) const;
    /// What `process` has said on any of its connections. What was said on one that is closed by
    /// now counts, too, whosever it was.
    QList<Message> fromProcess(pid_t process) const;
    /// The unique names of the connections that `process` has now.
    QStringList namesOf(pid_t process) const;
    /// How often `sender` has sent this signal.
    int count(const QString& sender, const QString& signal) const;

private:
    void read();

    SessionBus m_bus; ///< says what `catchUp` waits to overhear
    QProcess m_monitor;
    QByteArray m_unread;
    QList<Message> m_messages;
    int m_marks = 0;
};

} // namespace orvanta::tests
