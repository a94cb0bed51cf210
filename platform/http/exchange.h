// SPDX-License-Identifier: MIT
#pragma once

#include "base/completion.h"
#include "base/platform_error.h"
#include "platform/http/http_request.h"
#include "platform/http/limit_watch.h"

#include <functional>
#include <optional>
#include <utility>

namespace orvanta {

/// One request, its reply, and the wait of the caller. Main thread only, with a Qt event loop.
///
/// `begin`, then `onEnded`, then `deliver`. Destroying it undelivered abandons the caller.
class Exchange {
public:
    explicit Exchange(HttpRequest request) : m_request(std::move(request)) {}
    virtual ~Exchange() = default;
    Exchange(const Exchange&) = delete;
    Exchange& operator=(const Exchange&) = delete;

    Completion<HttpOutcome>::Waiter wait() const { return m_completion.wait(); }

    /// Sends the request; the limits count from here. `onEnded` is called once, when there is a
    /// reply or a failure, maybe inside this call, and may not destroy this object.
    void begin(std::function<void()> onEnded);

    /// After the end: resumes the caller with the reply or the failure, inside this call.
    void deliver();

protected:
    const HttpRequest& request() const { return m_request; }
    bool hasEnded() const { return m_outcome.has_value(); }

    /// A byte has moved.
    void noteActivity() { m_limits->noteActivity(); }
    // The first of these two decides.
    void succeed(HttpReply reply) { end(std::move(reply)); }
    void fail(PlatformError failure) { end(std::move(failure)); }

private:
    /// Called once.
    virtual void send() = 0;
    /// There is a reply or a failure: nothing more is to be sent or taken. May come from inside a
    /// notifier, which then only falls silent.
    virtual void stop() = 0;

    void end(HttpOutcome outcome);

    const HttpRequest m_request;
    std::function<void()> m_onEnded;
    std::optional<LimitWatch> m_limits;
    std::optional<HttpOutcome> m_outcome;
    Completion<HttpOutcome> m_completion;
};

} // namespace orvanta
