// SPDX-License-Identifier: MIT
#pragma once

#include "platform/platform.h"

#include <memory>

namespace orvanta {

class DesktopConnectorManager;

/// The application: makes the one manager of the process and has it started on the first turn of
/// the main loop. To be created exactly once.
class OrvantaTrayMacApp {
public:
    explicit OrvantaTrayMacApp(Platform& platform);
    OrvantaTrayMacApp(const OrvantaTrayMacApp&) = delete;
    OrvantaTrayMacApp& operator=(const OrvantaTrayMacApp&) = delete;

    /// The same one for the life of the process.
    const std::shared_ptr<DesktopConnectorManager>& manager() const { return m_manager; }

private:
    std::shared_ptr<DesktopConnectorManager> m_manager;
};

} // namespace orvanta
