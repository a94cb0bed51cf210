// SPDX-License-Identifier: MIT
#include "platform/curl/curl_exchange.h"

#include "platform/curl/curl_failure.h"

#include <QByteArrayView>

#include <climits>
#include <new>

#include <fcntl.h>

namespace orvanta {

namespace {

constexpr qsizetype kMebibyte = 1024 * 1024;

// Children must not hold our connections open.
int closeOnExec(void*, curl_socket_t socket, curlsocktype) noexcept {
    return fcntl(socket, F_SETFD, FD_CLOEXEC) == 0 ? CURL_SOCKOPT_OK : CURL_SOCKOPT_ERROR;
}

// Names are looked up on a thread of libcurl's, for which it otherwise waits whenever an exchange
// ends before its lookup: with a name server that is silent the main thread would stand still for
// ten seconds. A library that does not know the option still looks names up.
void leaveLookupsBehind([[maybe_unused]] CURL* easy) {
#if LIBCURL_VERSION_NUM >= 0x075700
    curl_easy_setopt(easy, CURLOPT_QUICK_EXIT, 1L);
#endif
}

QString inSeconds(Seconds limit) {
    return QStringLiteral("%1 s").arg(limit.count());
}

} // namespace

CurlExchange::CurlExchange(const CurlRequest& request)
    : m_request(request), m_easy(curl_easy_init()) {
    if (m_easy == nullptr) {
        throw std::bad_alloc();
    }
    setOptions();
    setCallbacks();
    request.options(easy());
    if (request.method == HttpMethod::Post) {
        setPostOptions();
    }
}

void CurlExchange::setOptions() {
    const QByteArray url = m_request.url.toUtf8();
    requireOk(curl_easy_setopt(easy(), CURLOPT_URL, url.constData()));
    requireOk(curl_easy_setopt(easy(), CURLOPT_ERRORBUFFER, m_detail.data()));
    requireOk(curl_easy_setopt(easy(), CURLOPT_NOSIGNAL, 1L));
    leaveLookupsBehind(easy());
    // Only our own limits count; libcurl's default would end connecting after five minutes.
    requireOk(curl_easy_setopt(easy(), CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(INT_MAX)));
    requireOk(curl_easy_setopt(easy(), CURLOPT_SOCKOPTFUNCTION, &closeOnExec));
}

void CurlExchange::setPostOptions() {
    // libcurl adds these two by itself unless told off.
    m_headers.reset(curl_slist_append(m_headers.release(), "Content-Type:"));
    m_headers.reset(curl_slist_append(m_headers.release(), "Expect:"));
    requireOk(curl_easy_setopt(easy(), CURLOPT_POST, 1L));
    // Some redirects would have it sent once more.
    requireOk(curl_easy_setopt(easy(), CURLOPT_FOLLOWLOCATION, 0L));
    requireOk(curl_easy_setopt(easy(), CURLOPT_POSTFIELDS, ""));
    requireOk(curl_easy_setopt(easy(), CURLOPT_POSTFIELDSIZE, 0L));
    requireOk(curl_easy_setopt(easy(), CURLOPT_HTTPHEADER, m_headers.get()));
}

void CurlExchange::setCallbacks() {
    curl_write_callback onBody = [](char* bytes, size_t, size_t size, void* self) noexcept {
        return static_cast<CurlExchange*>(self)->takeBody(bytes, size);
    };
    curl_write_callback onHeader = [](char* line, size_t, size_t size, void* self) noexcept {
        const auto length = static_cast<qsizetype>(size);
        static_cast<CurlExchange*>(self)->takeHeaderLine(QByteArrayView(line, length));
        return size;
    };
    curl_prereq_callback onConnected = [](void* self, char*, char*, int, int) noexcept {
        return static_cast<CurlExchange*>(self)->checkHop();
    };
    requireOk(curl_easy_setopt(easy(), CURLOPT_PREREQFUNCTION, onConnected));
    requireOk(curl_easy_setopt(easy(), CURLOPT_PREREQDATA, this));
    requireOk(curl_easy_setopt(easy(), CURLOPT_WRITEFUNCTION, onBody));
    requireOk(curl_easy_setopt(easy(), CURLOPT_WRITEDATA, this));
    requireOk(curl_easy_setopt(easy(), CURLOPT_HEADERFUNCTION, onHeader));
    requireOk(curl_easy_setopt(easy(), CURLOPT_HEADERDATA, this));
}

void CurlExchange::watchLimits(std::function<void(LimitWatch::Passed)> onPassed) {
    m_limits.emplace(m_request.limits, std::move(onPassed));
}

void CurlExchange::noteActivity() {
    m_limits->noteActivity();
}

std::size_t CurlExchange::takeBody(const char* bytes, std::size_t size) {
    noteActivity();
    if (m_request.method == HttpMethod::Post) {
        return size;
    }
    if (!keepBody(bytes, static_cast<qsizetype>(size))) {
        m_tooLarge = true;
        return 0; // makes libcurl end the transfer
    }
    return size;
}

bool CurlExchange::keepBody(const char* bytes, qsizetype size) {
    if (size > m_request.largestBody - m_reply.body.size()) {
        return false;
    }
    try {
        if (m_reply.body.isEmpty()) {
            reserveBody();
        }
        m_reply.body.append(bytes, size);
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

/// Growing by doubling would copy a large body several times, at last for a tenth of a second.
void CurlExchange::reserveBody() {
    curl_off_t announced = -1;
    curl_easy_getinfo(easy(), CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &announced);
    if (announced > 0 && announced <= m_request.largestBody) {
        m_reply.body.reserve(static_cast<qsizetype>(announced));
    }
}

/// Called before each request of a chain of redirects, when its connection stands.
int CurlExchange::checkHop() {
    const char* url = "";
    curl_easy_getinfo(easy(), CURLINFO_EFFECTIVE_URL, &url);
    const bool isEncrypted = qstrnicmp(url, "https:", 6) == 0;
    m_lostEncryption = m_wasEncrypted && !isEncrypted;
    m_wasEncrypted = isEncrypted;
    return m_lostEncryption ? CURL_PREREQFUNC_ABORT : CURL_PREREQFUNC_OK;
}

void CurlExchange::takeHeaderLine(QByteArrayView line) {
    noteActivity();
    if (line.startsWith("HTTP/")) {
        m_headEnded = false;
    } else if (line.trimmed().isEmpty()) {
        m_headEnded = true;
    }
}

void CurlExchange::end(CURLcode code) {
    long status = 0;
    curl_easy_getinfo(easy(), CURLINFO_RESPONSE_CODE, &status);
    m_reply.status = static_cast<int>(status);
    m_failure = failureOf(code);
    m_limits.reset();
}

void CurlExchange::end(LimitWatch::Passed passed) {
    const QString server = serverOf(m_request.url);
    const QString sentence =
        passed == LimitWatch::Passed::Idle
            ? QStringLiteral("The server at %1 did not respond for %2.")
                  .arg(server, inSeconds(m_request.limits.idle))
            : QStringLiteral("The server at %1 did not complete its reply within %2.")
                  .arg(server, inSeconds(m_request.limits.whole));
    m_failure = curlError(CURLE_OPERATION_TIMEDOUT, sentence);
}

std::optional<PlatformError> CurlExchange::failureOf(CURLcode code) {
    if (m_tooLarge) {
        return curlError(CURLE_FILESIZE_EXCEEDED,
                         QStringLiteral("The reply of the server at %1 is larger than %2 MiB.")
                             .arg(serverOf(m_request.url))
                             .arg(m_request.largestBody / kMebibyte));
    }
    if (m_lostEncryption) {
        return curlError(
            code, QStringLiteral("The server at %1 redirected to an address without encryption.")
                      .arg(serverOf(m_request.url)));
    }
    if (code != CURLE_OK) {
        return exchangeFailure(easy(), code, m_request.url, m_detail.data());
    }
    // libcurl is content with a connection that closes amid the headers.
    if (!m_headEnded) {
        return exchangeFailure(easy(), CURLE_PARTIAL_FILE, m_request.url,
                               "the reply ended within its headers");
    }
    return std::nullopt;
}

void CurlExchange::deliver() {
    if (m_failure) {
        m_completion.fail(*m_failure);
    } else {
        m_completion.succeed(std::move(m_reply));
    }
}

} // namespace orvanta
