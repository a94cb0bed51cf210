// SPDX-License-Identifier: MIT
#pragma once

/// Exit statuses of the program curl, of those that are looked at or made by ourselves.
namespace orvanta::curl_code {

constexpr int kUnsupportedProtocol = 1;
constexpr int kBadAddress = 3;
constexpr int kNameUnknown = 6;
constexpr int kNotReached = 7;
constexpr int kCutShort = 18;
constexpr int kTimeIsOver = 28;
constexpr int kAborted = 42;
constexpr int kTooManyRedirects = 47;
constexpr int kNotTrusted = 60;
constexpr int kTooLarge = 63;

/// Added to the signal that ended curl, as shells do.
constexpr int kEndedBySignal = 128;

} // namespace orvanta::curl_code
