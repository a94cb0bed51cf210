// SPDX-License-Identifier: MIT
#pragma once

#include "base/task.h"

#include <chrono>
#include <functional>
#include <memory>

namespace orvanta {

/// Durations as settings and constants give them: seconds, with fractions. Services clamp what
/// their clocks cannot express (at least 1 ms for a repeating timer, at most some 24 days).
using Seconds = std::chrono::duration<double>;

/// A repeating timer; destroying it stops it for good.
class RepeatingTimer {
public:
    virtual ~RepeatingTimer() = default;
};

/// The main thread's event loop. Everything the logic owns is touched from here only.
class MainQueue {
public:
    virtual ~MainQueue() = default;

    /// Runs `job` on a later turn of the loop, in the order of posting. May be called from any
    /// thread. Jobs still queued when the process ends are dropped.
    virtual void post(std::function<void()> job) = 0;

    /// Runs `job` once, no earlier than `delay` from now. Main thread only.
    virtual void after(Seconds delay, std::function<void()> job) = 0;

    /// Runs `tick` every `interval`, the first time one whole interval from now. Main thread only.
    [[nodiscard]] virtual std::unique_ptr<RepeatingTimer> repeat(Seconds interval,
                                                                 std::function<void()> tick) = 0;

    /// Suspends the calling coroutine for `duration`. Main thread only.
    virtual Task<> sleep(Seconds duration) = 0;
};

} // namespace orvanta
