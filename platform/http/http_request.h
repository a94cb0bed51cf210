// SPDX-License-Identifier: MIT
#pragma once

#include "platform/http_session.h"

#include <QString>

namespace orvanta {

enum class HttpMethod { Get, Post };

/// One request to send.
struct HttpRequest {
    HttpMethod method;
    QString url;
    HttpLimits limits;
    qsizetype largestBody; ///< in bytes
};

} // namespace orvanta
