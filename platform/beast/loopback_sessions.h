// SPDX-License-Identifier: MIT
#pragma once

#include "platform/http_session.h"

#include <memory>

namespace orvanta {

class Exchanges;

/// Sessions for servers on this machine, driven by the main thread's Qt event loop; it needs a
/// `QCoreApplication`. Addresses name such a server by number, from 127.0.0.0/8.
///
/// Main thread only. When this goes, exchanges still under way are abandoned: their connections
/// are closed and their callers resume with `TaskAbandoned`, as do later calls on its sessions.
class LoopbackSessions {
public:
    LoopbackSessions();
    ~LoopbackSessions();
    LoopbackSessions(const LoopbackSessions&) = delete;
    LoopbackSessions& operator=(const LoopbackSessions&) = delete;

    /// A session whose exchanges have `limits` each.
    std::shared_ptr<HttpSession> make(HttpLimits limits);

private:
    std::shared_ptr<Exchanges> m_exchanges;
};

} // namespace orvanta
