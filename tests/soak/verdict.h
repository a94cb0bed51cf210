// SPDX-License-Identifier: MIT
#pragma once

#include "soak/measure.h"

#include <QString>
#include <QStringList>

#include <vector>

namespace orvanta::soak {

/// How one figure went over a run.
struct Course {
    double firstQuarter = 0; ///< median
    double lastQuarter = 0;  ///< median
    double slopePerHour = 0; ///< of the straight line with the least squares, after the warm-up
    long smallest = 0;
    long greatest = 0;
};

/// The beginning of a run that does not count: a quarter of it, at most a quarter of an hour.
double warmUpSeconds(double runSeconds);

/// Of the samples after the warm-up; their `field`. There must be some.
Course courseOf(const std::vector<Sample>& samples, long Sample::*field);

/// One line for each figure.
QString tableOf(const std::vector<Sample>& samples);

/// What speaks against the tray: a sentence each, none if it holds nothing that it should not.
/// Without `judgesMemory` its size is left out.
QStringList complaintsAbout(const std::vector<Sample>& samples, bool judgesMemory);

} // namespace orvanta::soak
