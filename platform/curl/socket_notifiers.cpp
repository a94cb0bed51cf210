// SPDX-License-Identifier: MIT
#include "platform/curl/socket_notifiers.h"

namespace orvanta {

SocketNotifiers::SocketNotifiers(curl_socket_t socket, const std::function<void(int)>& onReady)
    : m_read(socket, QSocketNotifier::Read), m_write(socket, QSocketNotifier::Write) {
    listenTo(CURL_POLL_NONE);
    QObject::connect(&m_read, &QSocketNotifier::activated, &m_read,
                     [onReady] { onReady(CURL_CSELECT_IN); });
    QObject::connect(&m_write, &QSocketNotifier::activated, &m_write,
                     [onReady] { onReady(CURL_CSELECT_OUT); });
}

void SocketNotifiers::listenTo(int what) {
    m_read.setEnabled(what == CURL_POLL_IN || what == CURL_POLL_INOUT);
    m_write.setEnabled(what == CURL_POLL_OUT || what == CURL_POLL_INOUT);
}

} // namespace orvanta
