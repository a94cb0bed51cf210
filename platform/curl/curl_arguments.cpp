// SPDX-License-Identifier: MIT
#include "platform/curl/curl_arguments.h"

#include "orvanta_build_constants.h"
#include "platform/curl/curl_account.h"

#include <algorithm>
#include <cmath>

namespace orvanta {
namespace {

constexpr double kLongestLeftover = 24 * 60 * 60; // seconds

/// Heads go where the body does not: curl would print trailers amid what it prints of the body, and
/// what --include prints waits in curl for the first byte of the body.
QStringList outputs() {
    const QString account =
        QStringLiteral("%{stderr}%1%{errormsg}\\n%2%{redirect_url}\\n")
            .arg(QLatin1String(CurlAccount::kDetail), QLatin1String(CurlAccount::kRedirect));
    return {QStringLiteral("--silent"),
            QStringLiteral("--no-buffer"),
            QStringLiteral("--dump-header"),
            QStringLiteral("/dev/stderr"),
            QStringLiteral("--suppress-connect-headers"),
            QStringLiteral("--write-out"),
            account};
}

QString userAgent() {
    return QStringLiteral("orvanta-tray/") + QLatin1String(build::kVersion);
}

/// Ends a curl that a killed tray has left behind. One that is amid a reply ends by itself, at the
/// next byte, which nobody takes. One that waits in silence ends after ten times the limit at which
/// a living tray kills it: a reply that comes in drops, less than one byte a second, may do so for
/// that long.
QStringList leftoverLimits(Seconds idle) {
    // What is not a number counts as the shortest.
    const double seconds = idle.count() > 0.1 ? std::ceil(idle.count() * 10) : 1;
    const QString patience = QString::number(static_cast<int>(std::min(seconds, kLongestLeftover)));
    return {QStringLiteral("--connect-timeout"), patience,
            QStringLiteral("--speed-limit"),     QStringLiteral("1"),
            QStringLiteral("--speed-time"),      patience};
}

/// Beside a file of the caller's, curl would go on looking into the system's folder.
QStringList trust(const QString& store) {
    if (store.isEmpty()) {
        return {};
    }
    return {QStringLiteral("--cacert"), store, QStringLiteral("--capath"),
            QStringLiteral("/dev/null")};
}

/// An empty body, and not the type that curl would give it.
QStringList emptyPost() {
    return {QStringLiteral("--data"), QString(), QStringLiteral("--header"),
            QStringLiteral("Content-Type:")};
}

} // namespace

bool isAddressForCurl(const QString& url) {
    return url.startsWith(QLatin1String("http://"), Qt::CaseInsensitive) ||
           url.startsWith(QLatin1String("https://"), Qt::CaseInsensitive);
}

QStringList curlArguments(HttpMethod method, const QString& url, const CurlSetup& setup,
                          Seconds idle) {
    // Has to be the first, to keep the user's own settings of curl out.
    QStringList arguments{QStringLiteral("--disable")};
    arguments += outputs();
    arguments += {QStringLiteral("--globoff"),    QStringLiteral("--http1.1"),
                  QStringLiteral("--proto"),      QStringLiteral("=http,https"),
                  QStringLiteral("--user-agent"), userAgent(),
                  QStringLiteral("--noproxy"),    QString::fromLocal8Bit(setup.withoutProxy)};
    arguments += trust(setup.trustStore);
    arguments += leftoverLimits(idle);
    if (method == HttpMethod::Post) {
        arguments += emptyPost();
    }
    return arguments + QStringList{QStringLiteral("--url"), url};
}

} // namespace orvanta
