// SPDX-License-Identifier: MIT
#include "platform/http/exchange.h"

#include "platform/http/http_failure.h"

#include <utility>

namespace orvanta {

void Exchange::begin(std::function<void()> onEnded) {
    m_onEnded = std::move(onEnded);
    m_limits.emplace(m_request.limits, [this](LimitWatch::Passed passed) {
        fail(http_failure::limitPassed(passed, m_request.limits, m_request.url));
    });
    send();
    if (!hasEnded()) {
        // A timer takes longer to make than a request to send.
        m_limits->watch();
    }
}

void Exchange::end(HttpOutcome outcome) {
    if (hasEnded()) {
        return;
    }
    m_outcome = std::move(outcome);
    stop();
    m_onEnded();
}

void Exchange::deliver() {
    m_completion.decide(std::move(*m_outcome));
}

} // namespace orvanta
