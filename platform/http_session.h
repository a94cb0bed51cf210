// SPDX-License-Identifier: MIT
#pragma once

#include "base/platform_error.h"
#include "base/task.h"
#include "platform/main_queue.h"

#include <QByteArray>
#include <QString>

#include <limits>
#include <memory>
#include <utility>
#include <variant>

namespace orvanta {

/// The two independent limits of an exchange. An exchange that passes either fails.
struct HttpLimits {
    Seconds idle;  ///< longest time without a byte moving
    Seconds whole; ///< longest time from the call to the last byte of the reply

    bool operator==(const HttpLimits&) const = default;
};

/// The limits of a POST: those of its session, but never more than 60 s without a byte.
HttpLimits postLimits(HttpLimits session);

/// A complete reply; whatever its status, it is no failure.
struct HttpReply {
    int status = 0;
    QByteArray body;
};

/// How an exchange ended: with a reply, or with the reason why there is none. That a connector does
/// not answer is an everyday thing, so it is a value; whoever cannot do without the reply throws.
class HttpOutcome {
public:
    HttpOutcome(HttpReply reply) : m_ending(std::move(reply)) {}
    HttpOutcome(PlatformError failure) : m_ending(std::move(failure)) {}

    /// Null when there is none.
    const HttpReply* reply() const { return std::get_if<HttpReply>(&m_ending); }
    /// Null when there is a reply.
    const PlatformError* failure() const { return std::get_if<PlatformError>(&m_ending); }

    /// The reply. Throws the failure.
    HttpReply takeReply() {
        if (const PlatformError* error = failure()) {
            throw *error;
        }
        return std::get<HttpReply>(std::move(m_ending));
    }

private:
    std::variant<HttpReply, PlatformError> m_ending;
};

/// Sends requests. Main thread only; any number may be under way at once.
///
/// It is a failure when there is no connection, a limit is passed, a reply is cut short or not
/// HTTP, or a body is too large: of more than the caller wants, in any case of more than 16 MiB
/// from this machine, 2 GiB from elsewhere. Exchanges still under way when the session is dropped
/// run to their end.
class HttpSession {
public:
    virtual ~HttpSession() = default;

    Task<HttpOutcome> get(QString url) {
        return get(std::move(url), std::numeric_limits<qsizetype>::max());
    }
    /// The same for a reply whose body may have no more than `largestBody` bytes. From elsewhere,
    /// the body of a reply of another status than 200 is dropped then, whatever its length.
    virtual Task<HttpOutcome> get(QString url, qsizetype largestBody) = 0;

    /// An empty POST without headers of ours, under `postLimits`. It reaches the server at most
    /// once. The reply's body is read to its end and dropped.
    virtual Task<HttpOutcome> post(QString url) = 0;
};

/// Makes sessions.
class HttpSessionFactory {
public:
    virtual ~HttpSessionFactory() = default;

    /// A session for servers on this machine: no proxy whatever the environment says, no redirect
    /// followed, no cookie or cache kept, a new connection for every request.
    virtual std::shared_ptr<HttpSession> makeLoopbackSession(HttpLimits limits) = 0;

    /// The session for the outside world, the same one at every call: TLS verified against the
    /// system's store, the proxies of the environment that the process was started with honoured,
    /// up to 20 redirects followed (never from https to http), no cookie or cache kept, a new
    /// connection for every request. An exchange ends after 60 s without a byte moving, and not for
    /// taking long.
    virtual std::shared_ptr<HttpSession> sharedSession() = 0;
};

} // namespace orvanta
