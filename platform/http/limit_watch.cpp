// SPDX-License-Identifier: MIT
#include "platform/http/limit_watch.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace orvanta {

namespace {

std::chrono::milliseconds clamped(Seconds limit) {
    constexpr int kLongest = std::numeric_limits<int>::max();
    const double milliseconds = std::ceil(limit.count() * 1000);
    if (!(milliseconds > 1)) { // not a number counts as the shortest, too
        return std::chrono::milliseconds(1);
    }
    return std::chrono::milliseconds(milliseconds < kLongest ? static_cast<int>(milliseconds)
                                                             : kLongest);
}

} // namespace

LimitWatch::LimitWatch(const HttpLimits& limits, std::function<void(Passed)> onPassed)
    : m_idle(clamped(limits.idle)), m_onPassed(std::move(onPassed)), m_lastActivity(Clock::now()),
      m_wholeDeadline(m_lastActivity + clamped(limits.whole)) {}

void LimitWatch::watch() {
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { check(); });
    rearm(Clock::now());
}

void LimitWatch::noteActivity() {
    m_lastActivity = Clock::now();
}

LimitWatch::Clock::time_point LimitWatch::deadline() const {
    return std::min(m_lastActivity + m_idle, m_wholeDeadline);
}

void LimitWatch::rearm(Clock::time_point now) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline() - now);
    m_timer.start(std::max(left, std::chrono::milliseconds(0)));
}

void LimitWatch::check() {
    const auto now = Clock::now();
    if (now < deadline()) {
        m_overdue = false;
        rearm(now);
    } else if (!m_overdue) {
        // The loop may have been held up while the reply lay ready: let the sockets speak first.
        m_overdue = true;
        m_timer.start(0);
    } else {
        m_onPassed(now < m_wholeDeadline ? Passed::Idle : Passed::Whole);
    }
}

} // namespace orvanta
