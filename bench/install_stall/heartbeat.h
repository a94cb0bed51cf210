// SPDX-License-Identifier: MIT
#pragma once

#include <QElapsedTimer>
#include <QTimer>

#include <vector>

namespace orvanta::bench {

/// What the main loop owed its users during a phase, in milliseconds.
struct Stalls {
    double worst = 0;
    /// 99 of 100 beats came at most this late.
    double ninetyNine = 0;
    /// The most that the main thread itself computed between two beats. A stall without it is a
    /// wait: for the disk, or for other processes to leave a processor.
    double busiest = 0;
    double duration = 0;
};

/// Beats every millisecond on the main loop; how late a beat comes is how long a click would have
/// waited.
class Heartbeat {
public:
    Heartbeat();

    /// Begins a phase.
    void begin();
    /// Ends it. The time since the last beat counts: a phase that never returned to the loop has
    /// one stall, its whole length.
    Stalls end();

private:
    void beat();

    QTimer m_timer;
    QElapsedTimer m_phase;
    QElapsedTimer m_sinceBeat;
    double m_computedAtBeat = 0;
    double m_busiest = 0;
    std::vector<double> m_lateness;
};

} // namespace orvanta::bench
