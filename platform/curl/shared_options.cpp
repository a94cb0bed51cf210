// SPDX-License-Identifier: MIT
#include "platform/curl/shared_options.h"

#include "orvanta_build_constants.h"
#include "platform/curl/curl_failure.h"

namespace orvanta {
namespace {

constexpr long kMostRedirects = 20;

/// In bytes; as much as one turn of the main loop takes of a reply. With libcurl's own 16 KiB an
/// archive of 92 MB takes 5,600 turns.
constexpr long kReadAtOnce = 256 * 1024;

void setTrust(CURL* easy, const QByteArray& trustStore) {
    requireOk(curl_easy_setopt(easy, CURLOPT_SSL_VERIFYPEER, 1L));
    requireOk(curl_easy_setopt(easy, CURLOPT_SSL_VERIFYHOST, 2L));
    if (!trustStore.isEmpty()) {
        requireOk(curl_easy_setopt(easy, CURLOPT_CAINFO, trustStore.constData()));
    }
}

/// As libcurl would find them, which looks no further once it is told anything.
QByteArray exceptionsInEnvironment() {
    const QByteArray exceptions = qgetenv("no_proxy");
    return exceptions.isEmpty() ? qgetenv("NO_PROXY") : exceptions;
}

/// A proxy elsewhere knows nothing of this machine's own servers, and one on it is not needed.
void keepLoopbackFromProxies(CURL* easy) {
    QByteArray exceptions = exceptionsInEnvironment();
    // An asterisk means every address, but only when it stands alone.
    if (exceptions != "*") {
        exceptions.prepend("localhost,127.0.0.0/8,::1,");
    }
    requireOk(curl_easy_setopt(easy, CURLOPT_NOPROXY, exceptions.constData()));
}

} // namespace

void setSharedOptions(CURL* easy, const QByteArray& trustStore) {
    const QByteArray userAgent = QByteArray("orvanta-tray/") + build::kVersion;
    requireOk(curl_easy_setopt(easy, CURLOPT_USERAGENT, userAgent.constData()));
    requireOk(curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, "http,https"));
    requireOk(curl_easy_setopt(easy, CURLOPT_FOLLOWLOCATION, 1L));
    requireOk(curl_easy_setopt(easy, CURLOPT_MAXREDIRS, kMostRedirects));
    requireOk(curl_easy_setopt(easy, CURLOPT_HTTP_VERSION, CURL_HTTP_VERSION_1_1));
    requireOk(curl_easy_setopt(easy, CURLOPT_HTTP09_ALLOWED, 0L));
    requireOk(curl_easy_setopt(easy, CURLOPT_NETRC, CURL_NETRC_IGNORED));
    requireOk(curl_easy_setopt(easy, CURLOPT_BUFFERSIZE, kReadAtOnce));
    setTrust(easy, trustStore);
    keepLoopbackFromProxies(easy);

    // Hours lie between requests: a connection that was kept would only linger, and die unnoticed.
    requireOk(curl_easy_setopt(easy, CURLOPT_FRESH_CONNECT, 1L));
    requireOk(curl_easy_setopt(easy, CURLOPT_FORBID_REUSE, 1L));
}

} // namespace orvanta
