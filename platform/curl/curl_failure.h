// SPDX-License-Identifier: MIT
#pragma once

#include "base/platform_error.h"

#include <QString>

#include <curl/curl.h>

namespace orvanta {

/// A failure in the domain "curl".
PlatformError curlError(CURLcode code, const QString& description);

/// Throws `PlatformError` unless libcurl accepted the option.
void requireOk(CURLcode code);

/// "127.0.0.1:3000" of "http://127.0.0.1:3000/path", for sentences; the whole text where there is
/// no such part.
QString serverOf(const QString& url);

/// Says what went wrong with the exchange of `easy`, which has ended with `code`. `detail` is
/// libcurl's own account, possibly empty.
PlatformError exchangeFailure(CURL* easy, CURLcode code, const QString& url, const char* detail);

} // namespace orvanta
