// SPDX-License-Identifier: MIT
#pragma once

#include "base/platform_error.h"

#include <QString>

namespace orvanta::web_failure {

// Failures of an exchange with the server at `url` that only runs of curl have, with the exit
// status of curl as the code or the one that it has for such a thing.

/// curl has ended with `code`, and says why in `detail`, possibly empty.
PlatformError ofCurl(int code, const QString& url, const QString& detail);
/// Something has ended curl.
PlatformError endedBySignal(int signal, const QString& url);
/// Something else in the process has taken curl's exit status.
PlatformError lostSightOf(const QString& url);
/// The system's own error, and what to do.
PlatformError notStarted(const PlatformError& refusal);
/// curl was content although there was no whole reply.
PlatformError cutWithinHead(const QString& url);
PlatformError headTooLong(const QString& url);
PlatformError notOfTheWeb(const QString& url);
PlatformError lostEncryption(const QString& url);
PlatformError tooManyRedirects(int most, const QString& url);

} // namespace orvanta::web_failure
