// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

#include <curl/curl.h>

namespace orvanta {

/// Makes `easy` fit for servers anywhere: http and https, redirects followed, certificates checked
/// against the file `trustStore` (against the system's store when that is empty), proxies as
/// libcurl finds them in the environment but none for this machine itself, no cookies, a new
/// connection for every request. Throws `PlatformError` when libcurl refuses an option.
void setSharedOptions(CURL* easy, const QByteArray& trustStore);

} // namespace orvanta
