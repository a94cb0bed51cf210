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
}

void Exchange::succeed(HttpReply reply) {
    if (!m_hasEnded) {
        m_reply = std::move(reply);
        end();
    }
}

void Exchange::fail(PlatformError failure) {
    if (!m_hasEnded) {
        m_failure = std::move(failure);
        end();
    }
}

void Exchange::end() {
    m_hasEnded = true;
    stop();
    m_onEnded();
}

void Exchange::deliver() {
    if (m_failure) {
        m_completion.fail(*m_failure);
    } else {
        m_completion.succeed(std::move(m_reply));
    }
}

} // namespace orvanta
