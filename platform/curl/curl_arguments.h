// SPDX-License-Identifier: MIT
#pragma once

#include "platform/environment.h"
#include "platform/http_session.h"

#include <QString>
#include <QStringList>

namespace orvanta {

enum class HttpMethod { Get, Post };

/// Whether curl may be asked for it: curl takes an address without a scheme for one of http, and
/// one that begins with "@", in newer versions, for the name of a file with addresses.
bool isAddressForCurl(const QString& url);

/// The arguments with which curl sends one request to the web address `url` and follows nothing:
/// the body of the reply on standard output, what a `CurlAccount` reads on standard error. Trusted
/// is the system's store, or only the file `trustStore` when it is not empty. `idle` is the
/// caller's own limit. Taken from the environment of this process: the addresses that need no
/// proxy.
QStringList curlArguments(HttpMethod method, const QString& url, const QString& trustStore,
                          Seconds idle);

/// The environment of curl: that of this process, where curl finds the proxies, without anything
/// that says whom to trust.
EnvironmentVariables curlEnvironment();

} // namespace orvanta
