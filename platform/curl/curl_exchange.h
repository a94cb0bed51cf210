// SPDX-License-Identifier: MIT
#pragma once

#include "base/completion.h"
#include "base/platform_error.h"
#include "platform/curl/limit_watch.h"
#include "platform/http_session.h"

#include <QString>

#include <array>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>

#include <curl/curl.h>

namespace orvanta {

enum class HttpMethod { Get, Post };

/// What a kind of session sets on each of its exchanges.
using EasyOptions = std::function<void(CURL*)>;

/// One request to send.
struct CurlRequest {
    HttpMethod method;
    QString url;
    HttpLimits limits;
    EasyOptions options;
    qsizetype largestBody; ///< in bytes
};

/// One request and its reply: an easy handle, what its callbacks gather, and the wait of the
/// caller. `CurlMulti` drives it: `watchLimits`, then one of the two `end`s, then `deliver`.
/// Destroying it undelivered abandons the caller.
class CurlExchange {
public:
    /// Throws `PlatformError` when libcurl refuses an option.
    explicit CurlExchange(const CurlRequest& request);
    CurlExchange(const CurlExchange&) = delete;
    CurlExchange& operator=(const CurlExchange&) = delete;

    CURL* easy() const { return m_easy.get(); }
    Completion<HttpReply>::Waiter wait() const { return m_completion.wait(); }

    /// Starts both limits.
    void watchLimits(std::function<void(LimitWatch::Passed)> onPassed);
    /// A byte has moved.
    void noteActivity();

    /// The transfer has left the multi handle: libcurl is done with it, or a limit was passed.
    void end(CURLcode code);
    void end(LimitWatch::Passed passed);

    /// Resumes the caller with the reply or the failure, inside this call.
    void deliver();

private:
    void setOptions();
    void setPostOptions();
    void setCallbacks();
    std::size_t takeBody(const char* bytes, std::size_t size);
    bool keepBody(const char* bytes, qsizetype size);
    void reserveBody();
    int checkHop();
    void takeHeaderLine(QByteArrayView line);
    std::optional<PlatformError> failureOf(CURLcode code);

    struct EasyDeleter {
        void operator()(CURL* easy) const { curl_easy_cleanup(easy); }
    };
    struct ListDeleter {
        void operator()(curl_slist* list) const { curl_slist_free_all(list); }
    };

    const CurlRequest m_request;
    std::unique_ptr<curl_slist, ListDeleter> m_headers;
    std::array<char, CURL_ERROR_SIZE> m_detail{};
    std::unique_ptr<CURL, EasyDeleter> m_easy; ///< after what it points to
    std::optional<LimitWatch> m_limits;
    HttpReply m_reply;
    bool m_headEnded = false;
    bool m_tooLarge = false;
    bool m_wasEncrypted = false; ///< at some hop until now
    bool m_lostEncryption = false;
    std::optional<PlatformError> m_failure;
    Completion<HttpReply> m_completion;
};

} // namespace orvanta
