// SPDX-License-Identifier: MIT
#pragma once

#include "platform/environment.h"
#include "platform/http_session.h"
#include "platform/posix/exit_watch.h"

#include <QString>

#include <memory>

namespace orvanta {

class Exchanges;

/// The session for the outside world: every request is a run of the system's program curl, so that
/// what parses the network's bytes and secrets is a process of its own, and costs this one nothing
/// as long as nothing is asked. Needs a `QCoreApplication`, and a process that does not ignore
/// SIGCHLD (a `PosixChildProcessLauncher` sees to that).
///
/// Main thread only. When this object goes, exchanges still under way are abandoned: their curl is
/// killed and their callers resume with `TaskAbandoned`, as do later calls on its session.
class CurlSessions {
public:
    static constexpr HttpLimits kSharedLimits{Seconds(60), Seconds::max()};

    /// curl runs with `variables`, in which it finds the user's proxies, but in English and without
    /// those that say whom to trust: SSL_CERT_FILE names the certificates that are trusted in place
    /// of the system's.
    explicit CurlSessions(ExitWatchFactory watchExits, const EnvironmentVariables& variables = {},
                          HttpLimits limits = kSharedLimits,
                          QString executable = QStringLiteral("/usr/bin/curl"));
    ~CurlSessions();
    CurlSessions(const CurlSessions&) = delete;
    CurlSessions& operator=(const CurlSessions&) = delete;

    /// What `HttpSessionFactory` promises of it.
    std::shared_ptr<HttpSession> sharedSession() const { return m_sharedSession; }

private:
    std::shared_ptr<Exchanges> m_exchanges;
    std::shared_ptr<HttpSession> m_sharedSession;
};

} // namespace orvanta
