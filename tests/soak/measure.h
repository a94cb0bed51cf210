// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

#include <sys/types.h>

namespace orvanta::soak {

/// What a tray holds at one moment. Sizes are KiB.
struct Sample {
    double seconds = 0; ///< since the run began
    int deeds = 0;      ///< done before it
    long resident = 0;
    long proportional =
        0;              ///< shared pages divided by who shares them; moves with the other programs
    long anonymous = 0; ///< what no file stands behind
    long descriptors = 0;
    long threads = 0;
    long children = 0;
    long files = 0; ///< in the state root, folders included
};

/// Looks at the tray and at its state root. A poll or a thread that is on its way out may be caught
/// at one look, so what can be counted is the smallest number of several looks.
Sample measure(pid_t tray, const QString& stateRoot);

QByteArray csvHeader();
QByteArray csvLine(const Sample& sample);

} // namespace orvanta::soak
