// SPDX-License-Identifier: MIT
#pragma once

#include "platform/curl/curl_setup.h"
#include "platform/http/http_request.h"

#include <QString>
#include <QStringList>

namespace orvanta {

/// Whether curl may be asked for it: curl takes an address without a scheme for one of http, and
/// one that begins with "@", in newer versions, for the name of a file with addresses.
bool isAddressForCurl(const QString& url);

/// The arguments with which curl sends one request to the web address `url` and follows nothing:
/// the body of the reply on standard output, what a `CurlAccount` reads on standard error. `idle`
/// is the caller's own limit.
QStringList curlArguments(HttpMethod method, const QString& url, const CurlSetup& setup,
                          Seconds idle);

} // namespace orvanta
