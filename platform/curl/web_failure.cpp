// SPDX-License-Identifier: MIT
#include "platform/curl/web_failure.h"

#include "platform/curl/curl_codes.h"

#include <QUrl>

#include <cerrno>

namespace orvanta::web_failure {
namespace {

constexpr qsizetype kMebibyte = 1024 * 1024;

PlatformError failure(int code, const QString& sentence) {
    return PlatformError(QStringLiteral("curl"), code, sentence);
}

/// "name.example:3000" of "http://name.example:3000/path"; the whole text where there is no such
/// part.
QString serverOf(const QString& url) {
    const QString authority = url.section(u'/', 2, 2);
    return authority.isEmpty() ? url : authority;
}

PlatformError exchangeFailed(int code, const QString& url, const QString& reason) {
    return failure(code, QStringLiteral("The exchange with the server at %1 failed: %2.")
                             .arg(serverOf(url), reason));
}

/// What curl says of it, host and port, is news only when those are a proxy's.
PlatformError notReached(const QString& url, const QString& reason) {
    const QString sentence =
        QStringLiteral("The server at %1 could not be reached").arg(serverOf(url));
    const bool isNews = !reason.contains(QUrl(url).host(), Qt::CaseInsensitive);
    return failure(curl_code::kNotReached,
                   sentence + (isNews ? QStringLiteral(": %1.").arg(reason) : QStringLiteral(".")));
}

QString inSeconds(Seconds limit) {
    return QStringLiteral("%1 s").arg(limit.count());
}

} // namespace

PlatformError ofCurl(int code, const QString& url, const QString& detail) {
    const QString reason =
        detail.isEmpty() ? QStringLiteral("curl ended with status %1").arg(code) : detail;
    switch (code) {
    case curl_code::kNotReached:
        return notReached(url, reason);
    case curl_code::kBadAddress:
        return failure(code,
                       QStringLiteral("The address \"%1\" is not valid: %2.").arg(url, reason));
    default:
        return exchangeFailed(code, url, reason);
    }
}

PlatformError endedBySignal(int signal, const QString& url) {
    return exchangeFailed(curl_code::kEndedBySignal + signal, url,
                          QStringLiteral("the program curl was ended by signal %1").arg(signal));
}

PlatformError lostSightOf(const QString& url) {
    return exchangeFailed(curl_code::kCutShort, url,
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
    return exchangeFailed(curl_code::kCutShort, url,
                          QStringLiteral("the reply ended within its headers"));
}

PlatformError headTooLong(const QString& url) {
    return exchangeFailed(curl_code::kTooLarge, url,
                          QStringLiteral("the headers of the reply are too long"));
}

PlatformError bodyTooLarge(qsizetype largest, const QString& url) {
    return failure(curl_code::kTooLarge,
                   QStringLiteral("The reply of the server at %1 is larger than %2 MiB.")
                       .arg(serverOf(url), QString::number(largest / kMebibyte)));
}

PlatformError limitPassed(LimitWatch::Passed passed, const HttpLimits& limits, const QString& url) {
    const QString sentence =
        passed == LimitWatch::Passed::Idle
            ? QStringLiteral("The server at %1 did not respond for %2.")
                  .arg(serverOf(url), inSeconds(limits.idle))
            : QStringLiteral("The server at %1 did not complete its reply within %2.")
                  .arg(serverOf(url), inSeconds(limits.whole));
    return failure(curl_code::kTimeIsOver, sentence);
}

PlatformError notOfTheWeb(const QString& url) {
    return failure(curl_code::kUnsupportedProtocol,
                   QStringLiteral("The address \"%1\" is neither of http nor of https.").arg(url));
}

PlatformError lostEncryption(const QString& url) {
    return failure(curl_code::kAborted,
                   QStringLiteral("The server at %1 redirected to an address without encryption.")
                       .arg(serverOf(url)));
}

PlatformError tooManyRedirects(int most, const QString& url) {
    return exchangeFailed(curl_code::kTooManyRedirects, url,
                          QStringLiteral("Maximum (%1) redirects followed").arg(most));
}

} // namespace orvanta::web_failure
