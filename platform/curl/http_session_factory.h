// SPDX-License-Identifier: MIT
#pragma once

#include "platform/environment.h"
#include "platform/http_session.h"

#include <memory>

namespace orvanta {

class CurlMulti;

/// Sessions of libcurl, driven by the main thread's Qt event loop; it needs a `QCoreApplication`.
///
/// Main thread only. When the factory goes, exchanges still under way are abandoned: their
/// connections are closed and their callers resume with `TaskAbandoned`, as do later calls on its
/// sessions.
class CurlHttpSessionFactory : public HttpSessionFactory {
public:
    /// The limits of the shared session.
    static constexpr HttpLimits kSharedLimits{Seconds(60), Seconds::max()};

    /// Of `variables`, SSL_CERT_FILE names the certificates that the shared session trusts in
    /// place of the system's. Proxies are libcurl's to find, at each request.
    explicit CurlHttpSessionFactory(const EnvironmentVariables& variables = {},
                                    HttpLimits sharedLimits = kSharedLimits);
    ~CurlHttpSessionFactory() override;
    CurlHttpSessionFactory(const CurlHttpSessionFactory&) = delete;
    CurlHttpSessionFactory& operator=(const CurlHttpSessionFactory&) = delete;

    std::shared_ptr<HttpSession> makeLoopbackSession(HttpLimits limits) override;
    std::shared_ptr<HttpSession> sharedSession() override;

private:
    std::shared_ptr<CurlMulti> m_multi;
    std::shared_ptr<HttpSession> m_sharedSession;
};

} // namespace orvanta
