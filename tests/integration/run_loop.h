// SPDX-License-Identifier: MIT
#pragma once

#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

#include <chrono>
#include <functional>
#include <thread>

namespace orvanta {

constexpr std::chrono::seconds kPatience{20};

/// Turns the main loop until `condition` holds; false when that takes longer than `kPatience`.
inline bool turnLoopUntil(const std::function<bool()>& condition) {
    QElapsedTimer clock;
    clock.start();
    QEventLoop loop;
    QTimer wake;
    wake.start(std::chrono::milliseconds(5));
    while (!condition() && clock.elapsed() < std::chrono::milliseconds(kPatience).count()) {
        loop.processEvents(QEventLoop::WaitForMoreEvents);
    }
    return condition();
}

inline void turnLoopFor(std::chrono::milliseconds duration) {
    QEventLoop loop;
    QTimer::singleShot(duration, Qt::PreciseTimer, &loop, [&loop] { loop.quit(); });
    loop.exec();
}

/// As `turnLoopUntil`, but the main loop stands still.
inline bool waitUntil(const std::function<bool()>& condition) {
    QElapsedTimer clock;
    clock.start();
    while (!condition() && clock.elapsed() < std::chrono::milliseconds(kPatience).count()) {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return condition();
}

} // namespace orvanta
