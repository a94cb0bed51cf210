// SPDX-License-Identifier: MIT
#include "simulation/world/channel.h"
#include "simulation/world/network.h"

namespace orvanta::simulation {

namespace {

const QByteArray kRestartRequest = "POST /restart HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n";

ServerAction afterAWhile(Moment delay, int status, QByteArray body = {}) {
    return {.delay = delay, .reply = HttpReply{status, std::move(body)}};
}

ServerAction simpleAnswer(SimpleReply kind) {
    constexpr Moment kDelay = 2 * kMillisecond;
    switch (kind) {
    case SimpleReply::good:
        return afterAWhile(kDelay, 200, "ok");
    case SimpleReply::noContent:
        return afterAWhile(kDelay, 204);
    case SimpleReply::serverError:
        return afterAWhile(kDelay, 500);
    case SimpleReply::redirect:
        return afterAWhile(kDelay, 302);
    case SimpleReply::silence:
        return {};
    case SimpleReply::cut:
        break;
    }
    return {.delay = kDelay, .reply = std::nullopt};
}

ServerAction statusAnswer(const Connector& connector) {
    const Moment delay = connector.habits()[Condition::statusDelay] * kMillisecond;
    switch (connector.habits().as<StatusReply>(Condition::status)) {
    case StatusReply::silence:
        return {};
    case StatusReply::cut:
        return {.delay = delay, .reply = std::nullopt};
    case StatusReply::serverError:
        return afterAWhile(delay, 500, "{}");
    case StatusReply::notJson:
    case StatusReply::wrongType:
        return afterAWhile(delay, 200, connector.document());
    default:
        return {.delay = delay,
                .reply = HttpReply{200, connector.document()},
                .meaning = connector.meaning()};
    }
}

void askLater(const Connector& connector, WorldQueue& queue, Moment delay) {
    queue.inWorld(queue.now() + delay, [self = connector.shared_from_this()] {
        if (self->isAlive()) {
            self->askHost(kRestartRequest);
        }
    });
}

ServerAction restartAnswer(Connector& connector, WorldQueue& queue) {
    constexpr Moment kDelay = 3 * kMillisecond;
    const auto kind = connector.habits().as<RestartReply>(Condition::restartPost);
    const bool isRefused = kind == RestartReply::refuses || kind == RestartReply::refusesAndAsks;
    if (kind == RestartReply::exits) {
        queue.inWorld(queue.now() + 2 * kDelay,
                      [self = connector.shared_from_this()] { self->exit(0); });
    }
    if (kind == RestartReply::asksHost || kind == RestartReply::asksTwice ||
        kind == RestartReply::refusesAndAsks) {
        askLater(connector, queue, 2 * kDelay);
    }
    if (kind == RestartReply::asksTwice) {
        askLater(connector, queue, 200 * kMillisecond);
    }
    return afterAWhile(kDelay, isRefused ? 503 : 202);
}

} // namespace

ServerAction answerOf(Connector& connector, Purpose purpose, WorldQueue& queue) {
    switch (purpose) {
    case Purpose::status:
        return statusAnswer(connector);
    case Purpose::health:
        return simpleAnswer(connector.habits().as<SimpleReply>(Condition::health));
    case Purpose::restart:
        return restartAnswer(connector, queue);
    default:
        return simpleAnswer(connector.habits().as<SimpleReply>(Condition::posts));
    }
}

ServerAction answerOfChannel(const QString& url, const Conditions& conditions) {
    const Moment delay = conditions[Condition::channelDelay] * kMillisecond;
    const Channel channel(conditions);
    return url.endsWith(QLatin1String("/manifest.json")) ? channel.manifestAnswer(delay)
                                                         : channel.archiveAnswer(delay, url);
}

} // namespace orvanta::simulation
