// SPDX-License-Identifier: MIT
#pragma once

#include "base/completion.h"
#include "platform/curl/curl_exchange.h"
#include "platform/curl/socket_notifiers.h"

#include <QTimer>

#include <deque>
#include <memory>
#include <unordered_map>
#include <vector>

#include <curl/curl.h>

namespace orvanta {

/// Drives any number of exchanges from the main thread's event loop.
///
/// libcurl is called from here only, one call at a time: a socket that is ready, libcurl's timer or
/// a limit that passed makes one call, whose callbacks only take notes; exchanges that have ended
/// leave the multi handle after it. Callers are resumed on a later turn of the loop, outside
/// libcurl and outside every notifier and timer, so they may start new exchanges, drop sessions or
/// close this object. Main thread only.
class CurlMulti : public std::enable_shared_from_this<CurlMulti> {
public:
    CurlMulti();
    ~CurlMulti();
    CurlMulti(const CurlMulti&) = delete;
    CurlMulti& operator=(const CurlMulti&) = delete;

    /// Begins `exchange` and owns it until it is delivered. Throws `PlatformError` when libcurl
    /// refuses it. After `close` the exchange is abandoned.
    Completion<HttpReply>::Waiter start(std::unique_ptr<CurlExchange> exchange);

    /// Ends all exchanges at once, abandoning their callers.
    void close();

private:
    struct MultiDeleter {
        void operator()(CURLM* multi) const { curl_multi_cleanup(multi); }
    };
    using Exchanges = std::unordered_map<CURL*, std::unique_ptr<CurlExchange>>;

    void setCallbacks();
    void onSocketWanted(CURL* easy, curl_socket_t socket, int what);
    void onTimerWanted(long milliseconds);

    void onSocketReady(CURL* easy, curl_socket_t socket, int events);
    void act(curl_socket_t socket, int events);
    void onLimitPassed(CURL* easy, LimitWatch::Passed passed);

    std::unique_ptr<CurlExchange> takeFromMulti(CURL* easy);
    void takeEnded();
    void settleLater();
    void settle();

    std::unique_ptr<CURLM, MultiDeleter> m_multi; ///< none once closed
    QTimer m_timer;
    std::unordered_map<curl_socket_t, std::unique_ptr<SocketNotifiers>> m_sockets;
    std::vector<std::unique_ptr<SocketNotifiers>> m_retired; ///< may be in their activation
    Exchanges m_running;
    std::deque<std::unique_ptr<CurlExchange>> m_ended; ///< to be delivered
    bool m_settlePosted = false;
};

} // namespace orvanta
