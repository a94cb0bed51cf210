// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace orvanta {

/// The tray's own standard output.
class StandardOutput {
public:
    virtual ~StandardOutput() = default;

    /// Prints `line` and a line end. Never blocks and never fails: what nobody reads is dropped.
    virtual void printLine(const QString& line) = 0;
};

} // namespace orvanta
