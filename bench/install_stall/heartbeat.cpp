// SPDX-License-Identifier: MIT
#include "bench/install_stall/heartbeat.h"

#include <algorithm>
#include <ctime>

namespace orvanta::bench {

namespace {

constexpr int kIntervalMs = 1;
constexpr double kNsPerMs = 1e6;
constexpr double kMsPerS = 1e3;

double milliseconds(const QElapsedTimer& clock) {
    return static_cast<double>(clock.nsecsElapsed()) / kNsPerMs;
}

/// How long this thread has had a processor, in milliseconds.
double computed() {
    timespec time{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * kMsPerS +
           static_cast<double>(time.tv_nsec) / kNsPerMs;
}

} // namespace

Heartbeat::Heartbeat() {
    m_timer.setTimerType(Qt::PreciseTimer);
    QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { beat(); });
    m_timer.start(kIntervalMs);
}

void Heartbeat::begin() {
    m_lateness.clear();
    m_busiest = 0;
    m_computedAtBeat = computed();
    m_phase.start();
    m_sinceBeat.start();
}

Stalls Heartbeat::end() {
    beat();
    std::sort(m_lateness.begin(), m_lateness.end());
    const std::size_t rank = m_lateness.size() * 99 / 100;
    return {.worst = m_lateness.back(),
            .ninetyNine = m_lateness[std::min(rank, m_lateness.size() - 1)],
            .busiest = m_busiest,
            .duration = milliseconds(m_phase)};
}

void Heartbeat::beat() {
    m_lateness.push_back(std::max(0.0, milliseconds(m_sinceBeat) - kIntervalMs));
    m_sinceBeat.start();
    const double now = computed();
    m_busiest = std::max(m_busiest, now - m_computedAtBeat);
    m_computedAtBeat = now;
}

} // namespace orvanta::bench
