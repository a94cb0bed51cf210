// SPDX-License-Identifier: MIT
#include "fakes/fake_http.h"

#include <QUrl>

#include <utility>

namespace orvanta::fakes {

namespace {

PlatformError refused(const QString& url) {
    return {QStringLiteral("fake"), 7, QStringLiteral("%1 could not be reached.").arg(url)};
}

PlatformError tooLarge(const FakeRequest& request) {
    return {QStringLiteral("fake"), 63,
            QStringLiteral("The reply of %1 has more than %2 bytes.")
                .arg(request.url)
                .arg(request.largestBody)};
}

void decide(const FakeRequest& request, const HttpReply& reply) {
    if (reply.status == 0) {
        request.completion.decide(refused(request.url));
    } else if (reply.body.size() > request.largestBody) {
        request.completion.decide(tooLarge(request));
    } else {
        request.completion.decide(reply);
    }
}

} // namespace

class FakeHttp::Session : public HttpSession {
public:
    Session(FakeHttp& http, HttpLimits limits, bool isShared)
        : m_http(http), m_limits(limits), m_isShared(isShared) {}
    using HttpSession::get;
    Task<HttpOutcome> get(QString url, qsizetype largestBody) override {
        return send("GET", std::move(url), m_limits, largestBody);
    }
    Task<HttpOutcome> post(QString url) override {
        return send("POST", std::move(url), postLimits(m_limits),
                    std::numeric_limits<qsizetype>::max());
    }

private:
    Task<HttpOutcome> send(QByteArray method, QString url, HttpLimits limits,
                           qsizetype largestBody) {
        FakeRequest request{.method = std::move(method),
                            .url = std::move(url),
                            .limits = limits,
                            .largestBody = largestBody,
                            .isShared = m_isShared,
                            .sentAt = m_http.clock(),
                            .completion = {}};
        return m_http.send(std::move(request));
    }

    FakeHttp& m_http;
    HttpLimits m_limits;
    bool m_isShared;
};

std::shared_ptr<HttpSession> FakeHttp::makeLoopbackSession(HttpLimits limits) {
    sessions.push_back(limits);
    return std::make_shared<Session>(*this, limits, false);
}

std::shared_ptr<HttpSession> FakeHttp::sharedSession() {
    if (!m_sharedSession) {
        m_sharedSession = std::make_shared<Session>(*this, HttpLimits{}, true);
    }
    return m_sharedSession;
}

Task<HttpOutcome> FakeHttp::send(FakeRequest request) {
    auto waiter = request.completion.wait();
    if (const auto reply = respond(request)) {
        m_queue.post([request, reply = *reply] { decide(request, reply); });
    }
    requests.push_back(std::move(request));
    co_return co_await waiter;
}

void FakeHttp::answer(std::size_t index, HttpReply reply) {
    // Whoever resumes may send another request, which may move this one.
    const FakeRequest request = requests.at(index);
    decide(request, reply);
}

void FakeHttp::fail(std::size_t index) {
    answer(index, HttpReply{});
}

int FakeHttp::count(const QByteArray& method, const QString& path) const {
    int matches = 0;
    for (const auto& request : requests) {
        const QUrl url(request.url);
        const QString sent =
            url.path() + (url.hasQuery() ? QLatin1Char('?') + url.query() : QString());
        matches += request.method == method && sent == path ? 1 : 0;
    }
    return matches;
}

std::vector<QString> FakeHttp::urls() const {
    std::vector<QString> sent;
    for (const auto& request : requests) {
        sent.push_back(request.url);
    }
    return sent;
}

void FakeHttp::shutDown() {
    while (!requests.empty()) {
        const auto dropped = std::exchange(requests, {});
    }
}

} // namespace orvanta::fakes
