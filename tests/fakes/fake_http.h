// SPDX-License-Identifier: MIT
#pragma once

#include "base/completion.h"
#include "base/platform_error.h"
#include "platform/http_session.h"
#include "platform/main_queue.h"

#include <functional>
#include <optional>
#include <vector>

namespace orvanta::fakes {

/// A request that was sent, answered or not.
struct FakeRequest {
    QByteArray method;
    QString url;
    HttpLimits limits;
    /// In bytes; a reply with more is a failure.
    qsizetype largestBody = 0;
    /// Sent through the session for the outside world.
    bool isShared = false;
    Seconds sentAt{0};
    Completion<HttpOutcome> completion;
};

/// The network as the test wants it. A request is answered by `respond` on the next turn of the
/// loop: with a reply, with a failure for status 0, or not at all for nothing, until the test
/// calls `answer` or `fail`.
class FakeHttp : public HttpSessionFactory {
public:
    using Responder = std::function<std::optional<HttpReply>(const FakeRequest&)>;

    explicit FakeHttp(MainQueue& queue) : m_queue(queue) {}

    std::shared_ptr<HttpSession> makeLoopbackSession(HttpLimits limits) override;
    /// Has no limits of its own here.
    std::shared_ptr<HttpSession> sharedSession() override;

    /// Nothing listens anywhere.
    static std::optional<HttpReply> refuse(const FakeRequest&) { return HttpReply{}; }

    void answer(std::size_t index, HttpReply reply);
    void fail(std::size_t index);
    /// How many requests had this method and path.
    int count(const QByteArray& method, const QString& path) const;
    std::vector<QString> urls() const;
    /// Drops all requests; whoever waits for one is unwound.
    void shutDown();

    Responder respond = refuse;
    std::vector<FakeRequest> requests;
    /// The limits of every loopback session made, in order.
    std::vector<HttpLimits> sessions;
    /// Gives the time noted with a request.
    std::function<Seconds()> clock = [] { return Seconds(0); };

private:
    class Session;
    Task<HttpOutcome> send(FakeRequest request);

    MainQueue& m_queue;
    std::shared_ptr<HttpSession> m_sharedSession;
};

} // namespace orvanta::fakes
