// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace orvanta {

/// How an operation of the updater ended.
struct MacRuntimeUpdateResult {
    /// True when it reached its normal end, also with nothing to do.
    bool succeeded = false;
    /// One sentence for people; the updater's `lastStatus` at that moment.
    QString message;

    bool operator==(const MacRuntimeUpdateResult&) const = default;
};

} // namespace orvanta
