// SPDX-License-Identifier: MIT
#include "platform/curl/curl_multi.h"

#include "platform/curl/curl_failure.h"

#include <QCoreApplication>
#include <QMetaObject>

#include <algorithm>
#include <climits>
#include <new>
#include <utility>

namespace orvanta {

namespace {

CURLM* newMulti() {
    static const CURLcode initialised = curl_global_init(CURL_GLOBAL_DEFAULT);
    requireOk(initialised);
    CURLM* multi = curl_multi_init();
    if (multi == nullptr) {
        throw std::bad_alloc();
    }
    return multi;
}

} // namespace

CurlMulti::CurlMulti() : m_multi(newMulti()) {
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { act(CURL_SOCKET_TIMEOUT, 0); });
    setCallbacks();
}

CurlMulti::~CurlMulti() {
    close();
}

void CurlMulti::setCallbacks() {
    curl_socket_callback onSocket = [](CURL* easy, curl_socket_t socket, int what, void* self,
                                       void*) noexcept {
        static_cast<CurlMulti*>(self)->onSocketWanted(easy, socket, what);
        return 0;
    };
    curl_multi_timer_callback onTimer = [](CURLM*, long milliseconds, void* self) noexcept {
        static_cast<CurlMulti*>(self)->onTimerWanted(milliseconds);
        return 0;
    };
    curl_multi_setopt(m_multi.get(), CURLMOPT_SOCKETFUNCTION, onSocket);
    curl_multi_setopt(m_multi.get(), CURLMOPT_SOCKETDATA, this);
    curl_multi_setopt(m_multi.get(), CURLMOPT_TIMERFUNCTION, onTimer);
    curl_multi_setopt(m_multi.get(), CURLMOPT_TIMERDATA, this);
}

Completion<HttpReply>::Waiter CurlMulti::start(std::unique_ptr<CurlExchange> exchange) {
    auto waiter = exchange->wait();
    if (m_multi == nullptr) {
        return waiter;
    }
    CURL* easy = exchange->easy();
    if (const CURLMcode code = curl_multi_add_handle(m_multi.get(), easy); code != CURLM_OK) {
        throw curlError(CURLE_FAILED_INIT, QStringLiteral("The HTTP request could not be sent: %1.")
                                               .arg(QLatin1String(curl_multi_strerror(code))));
    }
    exchange->watchLimits([this, easy](LimitWatch::Passed passed) { onLimitPassed(easy, passed); });
    m_running.emplace(easy, std::move(exchange));
    // What libcurl has just asked to be woken for at once.
    act(CURL_SOCKET_TIMEOUT, 0);
    return waiter;
}

void CurlMulti::close() {
    if (m_multi == nullptr) {
        return;
    }
    for (const auto& [easy, exchange] : m_running) {
        curl_multi_remove_handle(m_multi.get(), easy);
    }
    m_multi.reset();
    m_timer.stop();
    m_sockets.clear();
    m_retired.clear();
    // Dropping them resumes their callers, who may come back here.
    const auto running = std::exchange(m_running, {});
    const auto ended = std::exchange(m_ended, {});
}

void CurlMulti::onSocketWanted(CURL* easy, curl_socket_t socket, int what) {
    auto& notifiers = m_sockets[socket];
    if (notifiers == nullptr) {
        notifiers = std::make_unique<SocketNotifiers>(
            socket, [this, easy, socket](int events) { onSocketReady(easy, socket, events); });
    }
    notifiers->listenTo(what);
    if (what == CURL_POLL_REMOVE) {
        m_retired.push_back(std::move(notifiers));
        m_sockets.erase(socket);
    }
}

void CurlMulti::onTimerWanted(long milliseconds) {
    if (milliseconds < 0) {
        m_timer.stop();
    } else {
        m_timer.start(static_cast<int>(std::min<long>(milliseconds, INT_MAX)));
    }
}

void CurlMulti::onSocketReady(CURL* easy, curl_socket_t socket, int events) {
    // Also for a part of a header line, of which libcurl tells nobody. A socket belongs to one
    // exchange all its life, because connections are not shared.
    if (const auto found = m_running.find(easy); found != m_running.end()) {
        found->second->noteActivity();
    }
    act(socket, events);
}

void CurlMulti::act(curl_socket_t socket, int events) {
    int running = 0;
    // A failure here is one of the whole machinery; the exchanges then end at their limits.
    curl_multi_socket_action(m_multi.get(), socket, events, &running);
    takeEnded();
    settleLater();
}

void CurlMulti::onLimitPassed(CURL* easy, LimitWatch::Passed passed) {
    auto exchange = takeFromMulti(easy);
    exchange->end(passed);
    m_ended.push_back(std::move(exchange));
    settleLater();
}

std::unique_ptr<CurlExchange> CurlMulti::takeFromMulti(CURL* easy) {
    curl_multi_remove_handle(m_multi.get(), easy);
    return std::move(m_running.extract(easy).mapped());
}

void CurlMulti::takeEnded() {
    int remaining = 0;
    while (const CURLMsg* message = curl_multi_info_read(m_multi.get(), &remaining)) {
        // Removing the handle frees the message.
        CURL* easy = message->easy_handle;
        const CURLcode code = message->data.result;
        auto exchange = takeFromMulti(easy);
        exchange->end(code);
        m_ended.push_back(std::move(exchange));
    }
}

void CurlMulti::settleLater() {
    if (m_settlePosted || (m_ended.empty() && m_retired.empty())) {
        return;
    }
    m_settlePosted = true;
    QMetaObject::invokeMethod(
        QCoreApplication::instance(),
        [weak = weak_from_this()] {
            if (const auto self = weak.lock()) {
                self->settle();
            }
        },
        Qt::QueuedConnection);
}

void CurlMulti::settle() {
    m_settlePosted = false;
    m_retired.clear();
    while (!m_ended.empty()) {
        const auto exchange = std::move(m_ended.front());
        m_ended.pop_front();
        exchange->deliver();
    }
}

} // namespace orvanta
