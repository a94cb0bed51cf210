// SPDX-License-Identifier: MIT
#pragma once

#include <QSocketNotifier>

#include <curl/curl.h>

#include <functional>

namespace orvanta {

/// Listens, for libcurl, to one of its sockets. Must not be destroyed inside `onReady`.
class SocketNotifiers {
public:
    /// `onReady` gets CURL_CSELECT_IN or CURL_CSELECT_OUT. Nothing is listened to yet.
    SocketNotifiers(curl_socket_t socket, const std::function<void(int)>& onReady);

    /// `what` is one of CURL_POLL_NONE, _IN, _OUT, _INOUT, _REMOVE.
    void listenTo(int what);

private:
    QSocketNotifier m_read;
    QSocketNotifier m_write;
};

} // namespace orvanta
