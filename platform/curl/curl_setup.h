// SPDX-License-Identifier: MIT
#pragma once

#include "platform/environment.h"
#include "platform/posix/exit_watch.h"

#include <QString>

namespace orvanta {

/// How curl is run.
struct CurlSetup {
    ExitWatchFactory watchExits;
    QString executable;
    QString trustStore;               ///< file with certificates; empty: the system's store
    QByteArray withoutProxy;          ///< addresses that need no proxy, as curl takes them
    EnvironmentVariables environment; ///< where curl finds the proxies; nothing about trust in it
};

/// With what `variables` say of proxies and of certificates (SSL_CERT_FILE, in place of the
/// system's store).
CurlSetup curlSetup(ExitWatchFactory watchExits, const EnvironmentVariables& variables,
                    QString executable);

} // namespace orvanta
