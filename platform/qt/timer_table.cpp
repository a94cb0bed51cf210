// SPDX-License-Identifier: MIT
#include "platform/qt/timer_table.h"

#include <QTimerEvent>

#include <chrono>
#include <cmath>
#include <limits>
#include <utility>

namespace orvanta {
namespace {

/// Whole milliseconds, rounded up; at least 1, which is also what no number at all becomes.
std::chrono::milliseconds clamped(Seconds delay) {
    // The product of a decimal fraction can lie a hair above the whole number that was meant.
    constexpr double kRoundingError = 1e-6;
    const double count = std::ceil(delay.count() * 1000 - kRoundingError);
    if (!(count >= 1)) {
        return std::chrono::milliseconds(1);
    }
    constexpr int kMost = std::numeric_limits<int>::max();
    return std::chrono::milliseconds(count < kMost ? static_cast<int>(count) : kMost);
}

} // namespace

int TimerTable::add(Seconds delay, std::function<void()> job, bool repeats) {
    // Others may be 5 % off, and early.
    const int id = startTimer(clamped(delay), Qt::PreciseTimer);
    m_timers[id] = {std::make_shared<const std::function<void()>>(std::move(job)), repeats};
    return id;
}

void TimerTable::remove(int id) {
    // The job is destroyed last, because that can come back here.
    if (const auto timer = m_timers.extract(id)) {
        killTimer(id);
    }
}

void TimerTable::clear() {
    while (!m_timers.empty()) {
        const auto timers = std::exchange(m_timers, {});
    }
}

void TimerTable::timerEvent(QTimerEvent* event) {
    const auto found = m_timers.find(event->timerId());
    if (found == m_timers.end()) {
        return;
    }
    const Timer timer = found->second;
    if (!timer.repeats) {
        remove(event->timerId());
    }
    (*timer.job)();
}

} // namespace orvanta
