// SPDX-License-Identifier: MIT
#pragma once

#include <QCoroTask>

#include <cstdio>
#include <exception>
#include <functional>
#include <utility>

namespace orvanta {

/// A coroutine of the main thread. It starts at once, up to its first real wait. Dropping one
/// detaches it; it does not cancel it.
template <typename T = void>
using Task = QCoro::Task<T>;

/// Thrown into a coroutine whose wait can never end because the service it waits for is being
/// taken down. It unwinds the whole chain and ends, silently, in `startTask` or `beginTask`. Nobody
/// else catches it.
struct TaskAbandoned {};

namespace detail {

inline Task<> runToEnd(std::function<Task<>()> body) {
    try {
        co_await body();
    } catch (const TaskAbandoned&) {
        // The process is going down; there is nobody left to tell.
    } catch (const std::exception& error) {
        std::fprintf(stderr, "orvanta-tray: a background task failed: %s\n", error.what());
    }
}

} // namespace detail

/// Starts a fire-and-forget task on the next turn of `queue` (anything with a `post`), so that it
/// never runs inside its caller. The body and its captures live until the task has ended. An
/// error that escapes the task is reported on standard error.
template <typename Queue>
void startTask(Queue& queue, std::function<Task<>()> body) {
    queue.post([body = std::move(body)] { detail::runToEnd(body); });
}

/// Begins such a task at once, up to its first real wait: for callers that the loop itself has
/// called, where a turn more gains nothing. Captures and errors are treated alike.
inline void beginTask(std::function<Task<>()> body) {
    detail::runToEnd(std::move(body));
}

} // namespace orvanta
