// SPDX-License-Identifier: MIT
#pragma once

#include "platform/background_work.h"

#include <functional>
#include <memory>
#include <optional>
#include <utility>

namespace orvanta {

/// Runs `compute` off the main thread and gives what it returned. The result outlives a caller
/// that is unwound while the job still runs.
template <typename T>
Task<T> computeInBackground(BackgroundWork& work, std::function<T()> compute) {
    const auto result = std::make_shared<std::optional<T>>();
    std::function<void()> job = [result, compute = std::move(compute)] {
        result->emplace(compute());
    };
    auto run = work.run(std::move(job));
    co_await std::move(run);
    co_return std::move(**result);
}

} // namespace orvanta
