// SPDX-License-Identifier: MIT
#include "platform/curl/web_failure.h"

#include "platform/http/http_failure.h"

#include <QUrl>

#include <cerrno>

namespace orvanta::web_failure {
namespace {

using http_failure::failure;
using http_failure::serverOf;

PlatformError exchangeFailed(int code, const QString& url, const QString& reason) {
    return failure(code, QStringLiteral("The exchange with the server at %1 failed: %2.")
                             .arg(serverOf(url), reason));
}

/// What curl says of it, host and port, is news only when those are a proxy's.
PlatformError notReached(const QString& url, const QString& reason) {
    const QString sentence =
        QStringLiteral("The server at %1 could not be reached").arg(serverOf(url));
    const bool isNews = !reason.contains(QUrl(url).host(), Qt::CaseInsensitive);
    return failure(http_failure::kNotReached,
                   sentence + (isNews ? QStringLiteral(": %1.").arg(reason) : QStringLiteral(".")));
}

} // namespace

PlatformError ofCurl(int code, const QString& url, const QString& detail) {
    const QString reason =
        detail.isEmpty() ? QStringLiteral("curl ended with status %1").arg(code) : detail;
    switch (code) {
    case http_failure::kNotReached:
        return notReached(url, reason);
    case http_failure::kBadAddress:
        return failure(code,
                       QStringLiteral("The address \"%1\" is not valid: %2.").arg(url, reason));
    default:
        return exchangeFailed(code, url, reason);
    }
}

PlatformError endedBySignal(int signal, const QString& url) {
    return exchangeFailed(http_failure::kEndedBySignal + signal, url,
                          QStringLiteral("the program curl was ended by signal %1").arg(signal));
}

PlatformError lostSightOf(const QString& url) {
    return exchangeFailed(http_failure::kCutShort, url,
                          QStringLiteral("how the program curl ended is not known"));
}

PlatformError notStarted(const PlatformError& refusal) {
    if (refusal.code() != ENOENT) {
        return refusal;
    }
    return PlatformError(
        refusal.domain(), refusal.code(),
        refusal.description() +
            QStringLiteral(" It fetches runtimes; on Debian it is in the package “curl”."));
}

PlatformError cutWithinHead(const QString& url) {
    return exchangeFailed(http_failure::kCutShort, url,
                          QStringLiteral("the reply ended within its headers"));
}

PlatformError headTooLong(const QString& url) {
    return exchangeFailed(http_failure::kTooLarge, url,
                          QStringLiteral("the headers of the reply are too long"));
}

PlatformError notOfTheWeb(const QString& url) {
    return failure(http_failure::kUnsupportedProtocol,
                   QStringLiteral("The address \"%1\" is neither of http nor of https.").arg(url));
}

PlatformError lostEncryption(const QString& url) {
    return failure(http_failure::kAborted,
                   QStringLiteral("The server at %1 redirected to an address without encryption.")
                       .arg(serverOf(url)));
}

PlatformError tooManyRedirects(int most, const QString& url) {
    return exchangeFailed(http_failure::kTooManyRedirects, url,
                          QStringLiteral("Maximum (%1) redirects followed").arg(most));
}

} // namespace orvanta::web_failure
