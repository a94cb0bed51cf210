// SPDX-License-Identifier: MIT
#include "integration/http/exchange_outcome.h"

#include <QCoreApplication>
#include <QTimer>

#include <utility>

namespace orvanta {

namespace {

using Clock = std::chrono::steady_clock;

Task<> record(Task<HttpOutcome> exchange, std::shared_ptr<ExchangeOutcome> outcome) {
    const auto start = Clock::now();
    try {
        const HttpOutcome ended = co_await exchange;
        if (ended.reply() != nullptr) {
            outcome->reply = *ended.reply();
        } else {
            outcome->error = *ended.failure();
        }
    } catch (const TaskAbandoned&) {
        outcome->abandoned = true;
    }
    outcome->seconds = std::chrono::duration<double>(Clock::now() - start).count();
}

} // namespace

std::shared_ptr<ExchangeOutcome> observe(Task<HttpOutcome> exchange) {
    auto outcome = std::make_shared<ExchangeOutcome>();
    record(std::move(exchange), outcome);
    return outcome;
}

Task<> callAfter(Task<HttpOutcome> exchange, std::function<void()> then) {
    const HttpOutcome outcome = co_await exchange;
    if (outcome.reply() != nullptr) {
        then();
    }
}

bool spinUntil(const std::function<bool()>& isDone, std::chrono::milliseconds bound) {
    const auto end = Clock::now() + bound;
    QTimer wake;
    wake.start(10);
    while (!isDone()) {
        if (Clock::now() > end) {
            return false;
        }
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

void spinFor(std::chrono::milliseconds duration) {
    spinUntil([] { return false; }, duration);
}

ExchangeOutcome outcomeOf(Task<HttpOutcome> exchange) {
    const auto outcome = observe(std::move(exchange));
    spinUntil([&] { return outcome->hasEnded(); });
    return *outcome;
}

} // namespace orvanta
