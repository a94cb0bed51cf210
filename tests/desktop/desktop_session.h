// SPDX-License-Identifier: MIT
#pragma once

#include <QProcess>
#include <QProcessEnvironment>
#include <QString>

namespace orvanta::tests {

/// A desktop without a panel: a display that nobody sees and a session bus, whose files are below
/// a directory of its own. When this object is gone, so is every process started in it.
class DesktopSession {
public:
    /// `base` is what processes in the session get besides the session's own variables.
    DesktopSession(const QString& directory, const QProcessEnvironment& base);
    ~DesktopSession();
    DesktopSession(const DesktopSession&) = delete;
    DesktopSession& operator=(const DesktopSession&) = delete;

    /// One line for each program that is not installed, with the Debian package that has it.
    static QStringList missingPrograms();

    /// False when one of them did not come up in ten seconds.
    bool startDisplay();
    /// Also after `killBus`, at the same address.
    bool startBus();
    void killBus();
    pid_t busProcess() const { return static_cast<pid_t>(m_bus.processId()); }
    void killDisplay();
    /// Kills whatever was started in this session; false when something survived.
    bool stop();

    /// For every process of the session. Complete once both have been started.
    const QProcessEnvironment& environment() const { return m_environment; }
    QString displayName() const { return m_displayName; }
    QString busAddress() const;
    QString configDirectory() const;
    /// "NAME=value", in the environment of every process of the session.
    QByteArray mark() const;

private:
    void writeBusConfiguration() const;

    QString m_directory;
    QProcessEnvironment m_environment;
    QProcess m_display;
    QProcess m_bus;
    QString m_displayName;
};

} // namespace orvanta::tests
