// SPDX-License-Identifier: MIT
#include "simulation/world/network.h"

#include "base/platform_error.h"

#include <algorithm>

namespace orvanta::simulation {

namespace {

Purpose purposeOf(QStringView path, bool isShared) {
    if (isShared) {
        return path.endsWith(QLatin1String("/manifest.json")) ? Purpose::manifest
                                                              : Purpose::archive;
    }
    if (path.endsWith(QLatin1String("/api/ov/status"))) {
        return Purpose::status;
    }
    if (path.endsWith(QLatin1String("/api/ov/health"))) {
        return Purpose::health;
    }
    if (path.endsWith(QLatin1String("/api/ov/pair/start"))) {
        return Purpose::pairing;
    }
    return path.endsWith(QLatin1String("/api/server/restart")) ? Purpose::restart
                                                               : Purpose::signingOut;
}

Moment moments(Seconds seconds) {
    return static_cast<Moment>(seconds.count() * 1e6);
}

} // namespace

class Network::Session : public HttpSession {
public:
    Session(Network& network, HttpLimits limits, bool isShared)
        : m_network(network), m_limits(limits), m_isShared(isShared) {}
    using HttpSession::get;
    Task<HttpOutcome> get(QString url, qsizetype largestBody) override {
        return send(url, m_limits, largestBody);
    }
    Task<HttpOutcome> post(QString url) override {
        return send(url, postLimits(m_limits), std::numeric_limits<qsizetype>::max());
    }

private:
    Task<HttpOutcome> send(const QString& url, HttpLimits limits, qsizetype largestBody) {
        auto exchange = std::make_shared<Exchange>();
        exchange->url = url;
        exchange->limits = limits;
        exchange->largestBody = largestBody;
        exchange->seen.purpose = purposeOf(url, m_isShared);
        return m_network.send(std::move(exchange), m_isShared);
    }

    Network& m_network;
    HttpLimits m_limits;
    bool m_isShared;
};

std::shared_ptr<HttpSession> Network::makeLoopbackSession(HttpLimits limits) {
    return std::make_shared<Session>(*this, limits, false);
}

std::shared_ptr<HttpSession> Network::sharedSession() {
    if (!m_shared) {
        constexpr Seconds kIdle{60};
        constexpr Seconds kNever{1e6};
        m_shared = std::make_shared<Session>(*this, HttpLimits{kIdle, kNever}, true);
    }
    return m_shared;
}

Task<HttpOutcome> Network::send(std::shared_ptr<Exchange> exchange, bool isShared) {
    auto waiter = exchange->completion.wait();
    exchange->seen.number = ++m_sent;
    exchange->seen.ticket = witness->requestSent(exchange->seen.purpose, exchange->seen.number);
    if (isShared) {
        sendToChannel(exchange);
    } else {
        sendToConnector(exchange);
    }
    exchange.reset();
    co_return co_await waiter;
}

void Network::sendToConnector(const std::shared_ptr<Exchange>& exchange) {
    constexpr qsizetype kBeforePort = 17; // "http://127.0.0.1:"
    const QStringView rest = QStringView(exchange->url).mid(kBeforePort);
    const std::int64_t port = rest.left(rest.indexOf(QLatin1Char('/'))).toLongLong();
    Connector* connector = m_connectors.listenerAt(port);
    if (connector == nullptr) {
        schedule(exchange, {.delay = kMillisecond / 2, .reply = std::nullopt}, {}, false);
        return;
    }
    schedule(exchange, answerOf(*connector, exchange->seen.purpose, m_queue),
             connector->weak_from_this(), true);
}

void Network::sendToChannel(const std::shared_ptr<Exchange>& exchange) {
    schedule(exchange, answerOfChannel(exchange->url, m_conditions), {}, false);
}

void Network::schedule(const std::shared_ptr<Exchange>& exchange, ServerAction action,
                       const std::weak_ptr<Connector>& server, bool hasServer) {
    const Moment limit = moments(std::min(exchange->limits.idle, exchange->limits.whole));
    if (!action.delay || *action.delay >= limit) {
        m_queue.forTray(m_queue.now() + limit, [this, exchange] { finish(*exchange, {}, true); });
        return;
    }
    m_queue.forTray(m_queue.now() + *action.delay,
                    [this, exchange, server, hasServer, action = std::move(action)] {
                        const auto alive = server.lock();
                        const bool isCut = hasServer && (!alive || !alive->isAlive());
                        finish(*exchange, action, isCut);
                    });
}

void Network::finish(Exchange& exchange, const ServerAction& action, bool isCut) const {
    const bool fits = !isCut && action.reply && action.reply->body.size() <= exchange.largestBody;
    exchange.seen.status = fits ? action.reply->status : 0;
    exchange.seen.meaning = fits ? action.meaning : std::nullopt;
    exchange.seen.offer = fits ? action.offer : std::nullopt;
    const ReplySeen seen = exchange.seen;
    witness->replied(seen);
    if (fits) {
        exchange.completion.decide(*action.reply);
    } else {
        exchange.completion.decide(
            PlatformError(QStringLiteral("http"), 7, QStringLiteral("The server did not answer.")));
    }
    witness->replyHandled(seen);
}

} // namespace orvanta::simulation
