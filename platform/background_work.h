// SPDX-License-Identifier: MIT
#pragma once

#include "base/task.h"

#include <functional>

namespace orvanta {

/// Runs what would hold the main thread up on another one.
class BackgroundWork {
public:
    virtual ~BackgroundWork() = default;

    /// Runs `job` on a worker thread and resumes the caller on the main thread when it has ended.
    /// What the job throws is thrown here. The job may use only services that say they can be used
    /// from any thread. Main thread only; jobs run one at a time, in order.
    ///
    /// A job that is running when the process ends is not waited for, and its caller ends with
    /// `TaskAbandoned`. So the job owns what it touches: it refers to nothing in its caller, and to
    /// no service that is destroyed while the process still runs.
    virtual Task<> run(std::function<void()> job) = 0;
};

} // namespace orvanta
