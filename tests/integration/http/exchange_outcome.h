// SPDX-License-Identifier: MIT
#pragma once

#include "base/platform_error.h"
#include "base/task.h"
#include "platform/http_session.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace orvanta {

/// How an exchange ended, and when.
struct ExchangeOutcome {
    std::optional<HttpReply> reply;
    std::optional<PlatformError> error;
    bool abandoned = false;
    double seconds = 0; ///< from the start of the observation to the end

    bool hasEnded() const { return reply || error || abandoned; }
    int status() const { return reply ? reply->status : -1; }
    /// The code of the failure, or 0.
    int code() const { return error ? error->code() : 0; }
    QString description() const { return error ? error->description() : QString(); }
};

/// Observes `exchange` to its end.
std::shared_ptr<ExchangeOutcome> observe(Task<HttpOutcome> exchange);

/// Calls `then` inside the turn that resumes whoever awaits `exchange` with its reply.
Task<> callAfter(Task<HttpOutcome> exchange, std::function<void()> then);

/// Turns the event loop until `isDone`; false if that takes longer than `bound`.
bool spinUntil(const std::function<bool()>& isDone,
               std::chrono::milliseconds bound = std::chrono::seconds(30));

/// Turns the event loop for that long.
void spinFor(std::chrono::milliseconds duration);

/// Turns the event loop until `exchange` has ended. An outcome that has not `hasEnded` is that of
/// an exchange that hangs.
ExchangeOutcome outcomeOf(Task<HttpOutcome> exchange);

} // namespace orvanta
