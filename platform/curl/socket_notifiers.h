// SPDX-License-Identifier: MIT
#pragma once

#include <QSocketNotifier>

#include <functional>
#include <optional>

#include <curl/curl.h>

namespace orvanta {

/// Listens, for libcurl, to one of its sockets. Must not be destroyed inside `onReady`.
class SocketNotifiers {
public:
    /// `onReady` gets CURL_CSELECT_IN or CURL_CSELECT_OUT. Nothing is listened to yet.
    SocketNotifiers(curl_socket_t socket, std::function<void(int)> onReady)
        : m_socket(socket), m_onReady(std::move(onReady)) {}
    SocketNotifiers(const SocketNotifiers&) = delete;
    SocketNotifiers& operator=(const SocketNotifiers&) = delete;

    /// `what` is one of CURL_POLL_NONE, _IN, _OUT, _INOUT, _REMOVE.
    void listenTo(int what);

private:
    using Notifier = std::optional<QSocketNotifier>;

    void listen(Notifier& notifier, QSocketNotifier::Type type, int event, bool isOn);

    curl_socket_t m_socket;
    std::function<void(int)> m_onReady;
    Notifier m_read;
    Notifier m_write;
};

} // namespace orvanta
