// SPDX-License-Identifier: MIT
#include "platform/curl/socket_notifiers.h"

namespace orvanta {

void SocketNotifiers::listenTo(int what) {
    listen(m_read, QSocketNotifier::Read, CURL_CSELECT_IN,
           what == CURL_POLL_IN || what == CURL_POLL_INOUT);
    listen(m_write, QSocketNotifier::Write, CURL_CSELECT_OUT,
           what == CURL_POLL_OUT || what == CURL_POLL_INOUT);
}

/// Each change of what is listened to is a call of the system, and so is the first of a new
/// notifier.
void SocketNotifiers::listen(Notifier& notifier, QSocketNotifier::Type type, int event, bool isOn) {
    if (notifier) {
        notifier->setEnabled(isOn);
    } else if (isOn) {
        notifier.emplace(m_socket, type);
        QObject::connect(&*notifier, &QSocketNotifier::activated, &*notifier,
                         [this, event] { m_onReady(event); });
    }
}

} // namespace orvanta
