// SPDX-License-Identifier: MIT
#include "platform/http/http_failure.h"

namespace orvanta::http_failure {
namespace {

constexpr qsizetype kMebibyte = 1024 * 1024;

QString inSeconds(Seconds limit) {
    return QStringLiteral("%1 s").arg(limit.count());
}

} // namespace

PlatformError failure(int code, const QString& sentence) {
    return PlatformError(QStringLiteral("http"), code, sentence);
}

QString serverOf(const QString& url) {
    const QString authority = url.section(u'/', 2, 2);
    return authority.isEmpty() ? url : authority;
}

PlatformError limitPassed(LimitWatch::Passed passed, const HttpLimits& limits, const QString& url) {
    const QString sentence =
        passed == LimitWatch::Passed::Idle
            ? QStringLiteral("The server at %1 did not respond for %2.")
                  .arg(serverOf(url), inSeconds(limits.idle))
            : QStringLiteral("The server at %1 did not complete its reply within %2.")
                  .arg(serverOf(url), inSeconds(limits.whole));
    return failure(kTimeIsOver, sentence);
}

PlatformError bodyTooLarge(qsizetype largest, const QString& url) {
    return failure(kTooLarge, QStringLiteral("The reply of the server at %1 is larger than %2 MiB.")
                                  .arg(serverOf(url), QString::number(largest / kMebibyte)));
}

} // namespace orvanta::http_failure
