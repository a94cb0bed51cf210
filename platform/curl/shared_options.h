// SPDX-License-Identifier: MIT
#pragma once

#include <curl/curl.h>

namespace orvanta {

/// Makes `easy` fit for servers anywhere: http and https, redirects followed, certificates checked
/// against the system's store or the one that SSL_CERT_FILE names, proxies as the environment names
/// them, no cookies, a new connection for every request. Throws `PlatformError` when libcurl
/// refuses an option.
void setSharedOptions(CURL* easy);

} // namespace orvanta
