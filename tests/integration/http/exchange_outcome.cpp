// SPDX-License-Identifier: MIT
#include "integration/http/exchange_outcome.h"

#include <QCoreApplication>
#include <QTimer>

#include <utility>

namespace orvanta {

namespace {

using Clock = std::chrono::steady_clock;

Task<> record(Task<HttpReply> exchange, std::shared_ptr<ExchangeOutcome> outcome) {
    const auto start = Clock::now();
    try {
        outcome->reply = co_await exchange;
    } catch (const PlatformError& error) {
        outcome->error = error;
    } catch (const TaskAbandoned&) {
        outcome->abandoned = true;
    }
    outcome->seconds = std::chrono::duration<double>(Clock::now() - start).count();
}

} // namespace

std::shared_ptr<ExchangeOutcome> observe(Task<HttpReply> exchange) {
    auto outcome = std::make_shared<ExchangeOutcome>();
    record(std::move(exchange), outcome);
    return outcome;
}

Task<> callAfter(Task<HttpReply> exchange, std::function<void()> then) {
    co_await exchange;
    then();
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

ExchangeOutcome outcomeOf(Task<HttpReply> exchange) {
    const auto outcome = observe(std::move(exchange));
    spinUntil([&] { return outcome->hasEnded(); });
    return *outcome;
}

} // namespace orvanta
