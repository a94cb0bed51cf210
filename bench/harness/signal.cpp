// SPDX-License-Identifier: MIT
// signal: for each line on standard input notes "sent PID NS" in BENCH_LOG and says on the session
// bus that there is a new tool tip, as an icon does. Prints "ready" when it is on the bus.

#include "bench/bare/monotonic_log.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QSocketNotifier>

#include <cstdio>
#include <iostream>
#include <string>

#include <unistd.h>

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    QDBusConnection bus = QDBusConnection::sessionBus();
    const QDBusMessage news = QDBusMessage::createSignal(
        QStringLiteral("/BenchSignal"), QStringLiteral("org.kde.StatusNotifierItem"),
        QStringLiteral("NewToolTip"));
    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, &input, [&] {
        std::string line;
        if (std::getline(std::cin, line)) {
            const std::int64_t time = monotonicNow();
            bus.send(news);
            logAt("sent", time);
        } else {
            QCoreApplication::quit();
        }
    });
    std::puts(bus.isConnected() ? "ready" : "no bus");
    std::fflush(stdout);
    return QCoreApplication::exec();
}
