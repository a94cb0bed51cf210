// SPDX-License-Identifier: MIT
#include "platform/curl/curl_failure.h"

#include <system_error>

namespace orvanta {

namespace {

QString systemReason(CURL* easy) {
    long number = 0;
    curl_easy_getinfo(easy, CURLINFO_OS_ERRNO, &number);
    if (number == 0) {
        return QStringLiteral("No connection");
    }
    return QString::fromStdString(std::generic_category().message(static_cast<int>(number)));
}

QString libraryReason(CURLcode code, const char* detail) {
    return QString::fromUtf8(*detail != '\0' ? detail : curl_easy_strerror(code));
}

} // namespace

PlatformError curlError(CURLcode code, const QString& description) {
    return PlatformError(QStringLiteral("curl"), code, description);
}

void requireOk(CURLcode code) {
    if (code != CURLE_OK) {
        throw curlError(code, QStringLiteral("The HTTP request could not be prepared: %1.")
                                  .arg(QLatin1String(curl_easy_strerror(code))));
    }
}

QString serverOf(const QString& url) {
    const QString authority = url.section(u'/', 2, 2);
    return authority.isEmpty() ? url : authority;
}

PlatformError exchangeFailure(CURL* easy, CURLcode code, const QString& url, const char* detail) {
    switch (code) {
    case CURLE_COULDNT_CONNECT:
        return curlError(code, QStringLiteral("The server at %1 could not be reached: %2.")
                                   .arg(serverOf(url), systemReason(easy)));
    case CURLE_URL_MALFORMAT:
        return curlError(code, QStringLiteral("The address \"%1\" is not valid: %2.")
                                   .arg(url, libraryReason(code, detail)));
    default:
        return curlError(code, QStringLiteral("The exchange with the server at %1 failed: %2.")
                                   .arg(serverOf(url), libraryReason(code, detail)));
    }
}

} // namespace orvanta
