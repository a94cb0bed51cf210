// SPDX-License-Identifier: MIT
#pragma once

#include "platform/curl/curl_account.h"
#include "platform/curl/curl_program.h"
#include "platform/curl/curl_setup.h"
#include "platform/curl/reply_body.h"
#include "platform/http/exchange.h"

#include <memory>
#include <optional>
#include <vector>

namespace orvanta {

/// In bytes, of any reply.
constexpr qsizetype kLargestWebBody = qsizetype{2} * 1024 * 1024 * 1024;

/// An exchange with a server anywhere: a run of curl for each address that the request is led to,
/// and what they print. Destroying it kills curl.
class WebExchange : public Exchange, private CurlListener {
public:
    WebExchange(const CurlSetup& setup, HttpRequest toSend);

private:
    void send() override { run(request().url); }
    void stop() override;

    /// Asks for the next address with a curl of its own.
    void run(const QString& url);
    void takeAccount(QByteArrayView piece) override;
    ReplyBody::Progress readBody(int descriptor) override;
    void takeEnd(int status) override;

    void prepareBody();
    bool isLedOn() const;
    void takeExit(int code);
    void follow(const QString& url);

    const CurlSetup m_setup;
    QString m_url; ///< that of the present hop
    int m_redirects = 0;
    CurlAccount m_account;
    std::optional<ReplyBody> m_body;
    std::vector<std::unique_ptr<CurlProgram>> m_programs; ///< any may be calling
};

} // namespace orvanta
