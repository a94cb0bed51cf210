// SPDX-License-Identifier: MIT
#pragma once

#include "platform/http_session.h"

#include <QTimer>

#include <chrono>
#include <functional>

namespace orvanta {

/// Watches the two limits of one exchange, to the millisecond. Limits are taken as at least 1 ms
/// and at most some 24 days.
class LimitWatch {
public:
    enum class Passed { Idle, Whole };

    /// Time counts from here. `onPassed` is called at most once, from the event loop.
    LimitWatch(const HttpLimits& limits, std::function<void(Passed)> onPassed);

    /// Begins to look at the clock. Once.
    void watch();

    /// A byte has moved.
    void noteActivity();

private:
    using Clock = std::chrono::steady_clock;

    Clock::time_point deadline() const;
    void rearm(Clock::time_point now);
    void check();

    const std::chrono::milliseconds m_idle;
    std::function<void(Passed)> m_onPassed;
    Clock::time_point m_lastActivity;
    const Clock::time_point m_wholeDeadline;
    bool m_overdue = false;
    QTimer m_timer;
};

} // namespace orvanta
