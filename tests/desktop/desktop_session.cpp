// SPDX-License-Identifier: MIT
#include "desktop/desktop_session.h"

#include "desktop/marked_processes.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>

#include <csignal>
#include <sys/prctl.h>

namespace orvanta::tests {
namespace {

constexpr int kLimitMs = 10'000;
const QString kMarkName = QStringLiteral("ORVANTA_DESKTOP_SESSION");
const QString kSettingsService = QStringLiteral("dbus-1/services/org.xfce.Xfconf.service");

/// Starts none of the services of the machine but the one that panels keep their settings with.
const QString kBusConfiguration = QStringLiteral(R"(<!DOCTYPE busconfig PUBLIC
 "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>%1</listen>
  <auth>EXTERNAL</auth>
  <servicedir>%2</servicedir>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
)");

QString settingsService() {
    return QStandardPaths::locate(QStandardPaths::GenericDataLocation, kSettingsService);
}

/// Ends with this process, however that ends, and takes with it all that hangs on it.
bool startAndAwaitLine(QProcess& process, const QString& program, const QStringList& arguments) {
    process.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
    process.start(program, arguments);
    return process.waitForReadyRead(kLimitMs);
}

void killAndReap(QProcess& process) {
    process.kill();
    process.waitForFinished(kLimitMs);
}

/// What the tester's own desktop would have its programs do.
void removeForeignVariables(QProcessEnvironment& environment) {
    for (const QString& name : environment.keys()) {
        for (const char* beginning : {"QT_", "GTK_", "GDK_", "XDG_CURRENT", "XDG_SESSION",
                                      "SESSION_MANAGER", "XAUTHORITY", "WAYLAND"}) {
            if (name.startsWith(QLatin1String(beginning))) {
                environment.remove(name);
            }
        }
    }
}

} // namespace

DesktopSession::DesktopSession(const QString& directory, const QProcessEnvironment& base)
    : m_directory(directory), m_environment(base) {
    adoptOrphans();
    removeForeignVariables(m_environment);
    const auto make = [this](const char* variable, const char* name) {
        const QString path = m_directory + QLatin1Char('/') + QLatin1String(name);
        QDir().mkpath(path);
        m_environment.insert(QLatin1String(variable), path);
        return path;
    };
    make("XDG_CONFIG_HOME", "config");
    make("XDG_DATA_HOME", "share");
    make("XDG_CACHE_HOME", "cache");
    QFile::setPermissions(make("XDG_RUNTIME_DIR", "run"),
                          QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    m_environment.insert(kMarkName, m_directory);
    m_environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), busAddress());
    m_environment.insert(QStringLiteral("LC_ALL"), QStringLiteral("C.UTF-8"));
    m_environment.insert(QStringLiteral("NO_AT_BRIDGE"), QStringLiteral("1"));
    m_environment.insert(QStringLiteral("GSETTINGS_BACKEND"), QStringLiteral("memory"));
}

DesktopSession::~DesktopSession() {
    stop();
}

QStringList DesktopSession::missingPrograms() {
    QStringList missing;
    const auto require = [&missing](const char* program, const char* package) {
        if (QStandardPaths::findExecutable(QLatin1String(program)).isEmpty()) {
            missing.append(QStringLiteral("%1 is missing; on Debian it is in %2.")
                               .arg(QLatin1String(program), QLatin1String(package)));
        }
    };
    require("Xvfb", "xvfb");
    require("dbus-daemon", "dbus-daemon");
    require("dbus-monitor", "dbus-bin");
    require("xfce4-panel", "xfce4-panel");
    require("xdotool", "xdotool");
    if (settingsService().isEmpty()) {
        missing.append(
            QStringLiteral("%1 is missing; on Debian it is in xfconf.").arg(kSettingsService));
    }
    return missing;
}

bool DesktopSession::startDisplay() {
    m_display.setProcessEnvironment(m_environment);
    const QStringList arguments{
        QStringLiteral("-displayfd"), QStringLiteral("1"),           QStringLiteral("-screen"),
        QStringLiteral("0"),          QStringLiteral("1280x800x24"), QStringLiteral("-nolisten"),
        QStringLiteral("tcp"),        QStringLiteral("-noreset"),
    };
    // Of servers that start at the same moment and reach for the same number, one ends at once.
    constexpr int kAttempts = 10;
    int attempt = 1;
    while (!startAndAwaitLine(m_display, QStringLiteral("Xvfb"), arguments)) {
        killAndReap(m_display);
        if (++attempt > kAttempts) {
            return false;
        }
    }
    m_displayName = QLatin1Char(':') + QString::fromLatin1(m_display.readLine().trimmed());
    m_environment.insert(QStringLiteral("DISPLAY"), m_displayName);
    return true;
}

bool DesktopSession::startBus() {
    writeBusConfiguration();
    m_bus.setProcessEnvironment(m_environment);
    return startAndAwaitLine(m_bus, QStringLiteral("dbus-daemon"),
                             {QStringLiteral("--config-file"),
                              m_directory + QStringLiteral("/bus.conf"), QStringLiteral("--nofork"),
                              QStringLiteral("--print-address")});
}

void DesktopSession::writeBusConfiguration() const {
    const QString services = m_directory + QStringLiteral("/services");
    QDir().mkpath(services);
    QFile::copy(settingsService(), services + QStringLiteral("/org.xfce.Xfconf.service"));
    QFile file(m_directory + QStringLiteral("/bus.conf"));
    if (file.open(QIODevice::WriteOnly)) {
        file.write(kBusConfiguration.arg(busAddress(), services).toUtf8());
    }
}

void DesktopSession::killBus() {
    killAndReap(m_bus);
}

void DesktopSession::killDisplay() {
    killAndReap(m_display);
}

bool DesktopSession::stop() {
    killAndReap(m_bus);
    killAndReap(m_display);
    return endProcessesWith(mark());
}

QString DesktopSession::busAddress() const {
    return QStringLiteral("unix:path=%1/bus").arg(m_directory);
}

QString DesktopSession::configDirectory() const {
    return m_directory + QStringLiteral("/config");
}

QByteArray DesktopSession::mark() const {
    return (kMarkName + QLatin1Char('=') + m_directory).toUtf8();
}

} // namespace orvanta::tests
