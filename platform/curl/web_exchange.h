// SPDX-License-Identifier: MIT
#pragma once

#include "base/completion.h"
#include "base/platform_error.h"
#include "platform/curl/curl_account.h"
#include "platform/curl/curl_arguments.h"
#include "platform/curl/curl_program.h"
#include "platform/curl/reply_body.h"
#include "platform/posix/limit_watch.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace orvanta {

/// How curl is run.
struct CurlSetup {
    ExitWatchFactory watchExits;
    QString executable;
    QString trustStore; ///< file with certificates; empty: the system's store
};

/// In bytes, of any reply.
constexpr qsizetype kLargestWebBody = qsizetype{2} * 1024 * 1024 * 1024;

/// One request to send.
struct WebRequest {
    HttpMethod method;
    QString url;
    HttpLimits limits;
    qsizetype largestBody; ///< in bytes
};

/// One request and its reply: a run of curl for each address that the request is led to, what they
/// print, and the wait of the caller. Main thread only.
///
/// `begin`, then `onEnded` from the event loop, then `deliver`. Destroying it undelivered abandons
/// the caller and kills curl.
class WebExchange : private CurlListener {
public:
    WebExchange(const CurlSetup& setup, WebRequest request);
    WebExchange(const WebExchange&) = delete;
    WebExchange& operator=(const WebExchange&) = delete;

    Completion<HttpReply>::Waiter wait() const { return m_completion.wait(); }

    /// Starts both limits and curl. `onEnded` is called once, when there is a reply or a failure,
    /// and may not destroy this object. Throws `PlatformError` when there is nothing to wait for.
    void begin(std::function<void()> onEnded);

    /// Resumes the caller with the reply or the failure, inside this call.
    void deliver();

private:
    void send(const QString& url);
    void takeAccount(QByteArrayView piece) override;
    ReplyBody::Progress readBody(int descriptor) override;
    void takeEnd(int status) override;

    void prepareBody();
    bool isLedOn() const;
    void takeExit(int code);
    void follow(const QString& url);
    void fail(PlatformError failure);
    void end();

    const CurlSetup m_setup;
    const WebRequest m_request;
    std::function<void()> m_onEnded; ///< none once called
    std::optional<LimitWatch> m_limits;
    QString m_url; ///< that of the present hop
    int m_redirects = 0;
    CurlAccount m_account;
    std::optional<ReplyBody> m_body;
    HttpReply m_reply;
    std::optional<PlatformError> m_failure;
    std::vector<std::unique_ptr<CurlProgram>> m_programs; ///< any may be calling
    Completion<HttpReply> m_completion;
};

} // namespace orvanta
