// SPDX-License-Identifier: MIT
#pragma once

#include "base/platform_error.h"
#include "platform/http/limit_watch.h"

#include <QString>

/// Failures of exchanges, in the domain "http". The codes are the exit statuses of the program
/// curl, so that failures read alike whichever session reports them.
namespace orvanta::http_failure {

constexpr int kUnsupportedProtocol = 1;
constexpr int kBadAddress = 3;
constexpr int kNotReached = 7;
constexpr int kMalformedReply = 8;
constexpr int kCutShort = 18;
constexpr int kTimeIsOver = 28;
constexpr int kAborted = 42;
constexpr int kTooManyRedirects = 47;
constexpr int kNoReply = 52;
constexpr int kConnectionBroke = 56;
constexpr int kTooLarge = 63;

/// Added to the signal that ended curl, as shells do.
constexpr int kEndedBySignal = 128;

PlatformError failure(int code, const QString& sentence);

/// "name.example:3000" of "http://name.example:3000/path"; the whole text where there is no such
/// part. What sentences call the server at `url`.
QString serverOf(const QString& url);

/// The server at `url` was too slow for one of `limits`.
PlatformError limitPassed(LimitWatch::Passed passed, const HttpLimits& limits, const QString& url);

/// The body of its reply has more than `largest` bytes.
PlatformError bodyTooLarge(qsizetype largest, const QString& url);

} // namespace orvanta::http_failure
