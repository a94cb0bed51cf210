// SPDX-License-Identifier: MIT
#include "hostcontrol/control_request.h"

namespace orvanta {

bool isRestartRequest(const QByteArray& received) {
    return received.startsWith("POST /restart ") && received.isValidUtf8();
}

QByteArray controlReply(bool isAccepted) {
    const QByteArray status = isAccepted ? "202 Accepted" : "404 Not Found";
    const QByteArray body = isAccepted ? R"({"accepted":true})" : R"({"accepted":false})";
    return "HTTP/1.1 " + status + "\r\nContent-Type: application/json\r\nContent-Length: " +
           QByteArray::number(body.size()) + "\r\nConnection: close\r\n\r\n" + body;
}

} // namespace orvanta
