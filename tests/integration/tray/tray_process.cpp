// SPDX-License-Identifier: MIT
#include "integration/tray/tray_process.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonDocument>

#include <csignal>

namespace orvanta::tests {

TrayTest::TrayTest() : environment(QProcessEnvironment::systemEnvironment()) {
    for (const char* name :
         {"DISPLAY", "WAYLAND_DISPLAY", "DBUS_SESSION_BUS_ADDRESS", "http_proxy", "https_proxy",
          "HTTPS_PROXY", "all_proxy", "ALL_PROXY", "no_proxy", "NO_PROXY"}) {
        environment.remove(QString::fromLatin1(name));
    }
    environment.insert(QStringLiteral("HOME"), home.path());
    environment.insert(QStringLiteral("XDG_DATA_HOME"), home.filePath(QStringLiteral("share")));
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), home.filePath(QStringLiteral("config")));
    environment.insert(QStringLiteral("XDG_CONFIG_DIRS"), home.filePath(QStringLiteral("system")));
    environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), home.filePath(QStringLiteral("run")));
    if (ORVANTA_SANITIZED) {
        // Else the sanitizer keeps up to 256 MiB of freed memory, which would count as growth.
        environment.insert(QStringLiteral("ASAN_OPTIONS"), QStringLiteral("quarantine_size_mb=4"));
    }
    QDir().mkpath(home.filePath(QStringLiteral("run")));
    writeStateFile(
        QStringLiteral("config.json"),
        R"({"tray":{"statusPollIntervalSeconds":0.2},"runtimeUpdates":{"enabled":false}})");
    switches.insert(QStringLiteral("journal"), true);
}

TrayTest::~TrayTest() {
    if (tray.state() != QProcess::NotRunning) {
        tray.terminate();
        if (!tray.waitForFinished(5'000)) {
            tray.kill();
            tray.waitForFinished(5'000);
        }
    }
    killConnectors();
}

void TrayTest::killConnectors() {
    for (const QJsonObject& start : journal(QStringLiteral("start"))) {
        const pid_t pid = start.value(QStringLiteral("pid")).toInt();
        QFile variables(QStringLiteral("/proc/%1/environ").arg(pid));
        if (variables.open(QIODevice::ReadOnly) &&
            variables.readAll().contains("ORVANTA_STATE_ROOT=" + stateRoot().toUtf8())) {
            ::kill(pid, SIGKILL);
        }
    }
}

void TrayTest::writeStateFile(const QString& name, const QByteArray& bytes) const {
    QDir().mkpath(stateRoot());
    QFile file(stateRoot() + QLatin1Char('/') + name);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

void TrayTest::writeSwitches() const {
    writeStateFile(QStringLiteral("demo-switches.json"), QJsonDocument(switches).toJson());
}

void TrayTest::startTray(const QStringList& arguments) {
    writeSwitches();
    tray.setProcessEnvironment(environment);
    tray.setProcessChannelMode(QProcess::SeparateChannels);
    tray.start(executable, arguments);
    ASSERT_TRUE(tray.waitForStarted()) << tray.errorString().toStdString();
}

void TrayTest::startAndWaitForConnector() {
    startTray();
    ASSERT_TRUE(waitUntil([this] { return connectorPort() > 0 && connector().answers(); }))
        << lines().join(QLatin1Char('\n')).toStdString();
}

void TrayTest::type(const QString& command) {
    tray.write(command.toUtf8() + "\n");
    tray.waitForBytesWritten(1'000);
}

bool TrayTest::waitUntil(const std::function<bool()>& condition, int limitMs) {
    QElapsedTimer elapsed;
    elapsed.start();
    while (!condition()) {
        if (elapsed.elapsed() > limitMs) {
            return false;
        }
        tray.waitForReadyRead(20);
    }
    return true;
}

QStringList TrayTest::lines() {
    m_output += tray.readAllStandardOutput();
    QStringList all;
    for (const QByteArray& line : m_output.split('\n')) {
        all.append(QString::fromUtf8(line).trimmed());
    }
    return all;
}

bool TrayTest::waitForLine(const QString& line, int limitMs) {
    return waitUntil([&] { return lines().contains(line); }, limitMs);
}

QString TrayTest::lastLine(const QString& beginning) {
    const QStringList all = lines();
    for (auto line = all.crbegin(); line != all.crend(); ++line) {
        if (line->startsWith(beginning)) {
            return *line;
        }
    }
    return {};
}

int TrayTest::waitForExit(int limitMs) {
    if (tray.state() != QProcess::NotRunning && !tray.waitForFinished(limitMs)) {
        return -1;
    }
    return tray.exitStatus() == QProcess::NormalExit ? tray.exitCode() : -1;
}

QList<QJsonObject> TrayTest::journal(const QString& event) const {
    QFile file(stateRoot() + QStringLiteral("/demo-journal.jsonl"));
    QList<QJsonObject> entries;
    if (!file.open(QIODevice::ReadOnly)) {
        return entries;
    }
    for (const QByteArray& line : file.readAll().split('\n')) {
        const QJsonObject entry = QJsonDocument::fromJson(line).object();
        if (entry.value(QStringLiteral("event")).toString() == event) {
            entries.append(entry);
        }
    }
    return entries;
}

int TrayTest::connectorPort() const {
    const auto entries = journal(QStringLiteral("listening"));
    return entries.isEmpty() ? 0 : entries.last().value(QStringLiteral("port")).toInt();
}

int TrayTest::connectorPid() const {
    const auto entries = journal(QStringLiteral("listening"));
    return entries.isEmpty() ? 0 : entries.last().value(QStringLiteral("pid")).toInt();
}

bool TrayTest::waitForNewConnector(int afterPid, int limitMs) {
    return waitUntil(
        [&] { return connectorPid() != afterPid && connectorPid() > 0 && connector().answers(); },
        limitMs);
}

} // namespace orvanta::tests
