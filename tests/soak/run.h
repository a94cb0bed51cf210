// SPDX-License-Identifier: MIT
#pragma once

#include "soak/measure.h"
#include "soak/soaked_tray.h"

#include <QElapsedTimer>
#include <QFile>

#include <cstdint>
#include <random>
#include <vector>

namespace orvanta::soak {

struct Plan {
    double seconds = 0;
    int restarts = 0; ///< if not 0, the run ends with these instead
    std::uint64_t seed = 0;
    QString tray; ///< the program
    QString csv;  ///< where each sample goes
};

/// One line on standard output.
void print(const QString& text);

/// A tray kept busy, and what it held meanwhile.
class Run {
public:
    /// Starts the tray for `user`, who outlives this object.
    Run(const Plan& plan, User& user);

    /// To the end of the plan; says what was done.
    void go();
    const std::vector<Sample>& samples() const { return m_samples; }

private:
    double seconds() const;
    void soak();
    void restart();
    void restAWhile();
    bool isSampleDue(double interval) const;
    void takeSample(int deeds);

    const Plan m_plan;
    std::mt19937_64 m_random;
    SoakedTray m_tray;
    QFile m_csv;
    QElapsedTimer m_time;
    std::vector<Sample> m_samples;
};

} // namespace orvanta::soak
