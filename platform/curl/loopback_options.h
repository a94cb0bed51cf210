// SPDX-License-Identifier: MIT
#pragma once

#include <curl/curl.h>

namespace orvanta {

/// Makes `easy` fit for servers on this machine: plain HTTP/1.1, straight to the address, nothing
/// taken from the environment or from earlier exchanges, sent at most once. Throws `PlatformError`
/// when libcurl refuses an option.
void setLoopbackOptions(CURL* easy);

} // namespace orvanta
