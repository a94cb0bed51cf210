// SPDX-License-Identifier: MIT
#include "desktop/waiting.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QThread>

namespace orvanta::tests {

bool waitFor(const std::function<bool()>& condition, std::chrono::milliseconds limit) {
    QElapsedTimer elapsed;
    elapsed.start();
    while (!condition()) {
        if (elapsed.hasExpired(limit.count())) {
            return false;
        }
        QCoreApplication::processEvents();
        QThread::msleep(10);
    }
    return true;
}

bool holdsFor(const std::function<bool()>& condition, std::chrono::milliseconds span) {
    return !waitFor([&condition] { return !condition(); }, span);
}

} // namespace orvanta::tests
