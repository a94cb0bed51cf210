// SPDX-License-Identifier: MIT
#include "platform/curl/loopback_options.h"

#include "platform/curl/curl_failure.h"

namespace orvanta {

void setLoopbackOptions(CURL* easy) {
    requireOk(curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, "http"));
    requireOk(curl_easy_setopt(easy, CURLOPT_HTTP_VERSION, CURL_HTTP_VERSION_1_1));
    requireOk(curl_easy_setopt(easy, CURLOPT_HTTP09_ALLOWED, 0L));
    requireOk(curl_easy_setopt(easy, CURLOPT_FOLLOWLOCATION, 0L));
    requireOk(curl_easy_setopt(easy, CURLOPT_NETRC, CURL_NETRC_IGNORED));

    // An empty proxy, unlike none, keeps libcurl from looking into the environment.
    requireOk(curl_easy_setopt(easy, CURLOPT_PROXY, ""));
    requireOk(curl_easy_setopt(easy, CURLOPT_NOPROXY, "*"));

    // On a connection that was kept and has died, libcurl would send the request a second time.
    requireOk(curl_easy_setopt(easy, CURLOPT_FRESH_CONNECT, 1L));
    requireOk(curl_easy_setopt(easy, CURLOPT_FORBID_REUSE, 1L));
}

} // namespace orvanta
