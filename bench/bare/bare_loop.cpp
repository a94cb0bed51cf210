// SPDX-License-Identifier: MIT
// bare_loop: the least that a program with Qt's main loop is.

#include "bench/bare/monotonic_log.h"

#include <QCoreApplication>
#include <QTimer>

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    QTimer::singleShot(0, [] { logNow("turned"); });
    return QCoreApplication::exec();
}
