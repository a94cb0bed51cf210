// SPDX-License-Identifier: MIT
#include "integration/terminal/main_loop.h"

#include <QCoreApplication>
#include <QDeadlineTimer>

namespace orvanta {

bool waitUntil(const std::function<bool()>& condition) {
    const QDeadlineTimer deadline(10'000);
    while (!condition()) {
        if (deadline.hasExpired()) {
            return false;
        }
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    }
    return true;
}

void settle() {
    const QDeadlineTimer deadline(100);
    while (!deadline.hasExpired()) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    }
}

} // namespace orvanta
