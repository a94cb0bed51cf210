// SPDX-License-Identifier: MIT
#pragma once

#include "app/http_sessions.h"
#include "app/terminal_screen.h"
#include "platform/platform.h"
#include "platform/posix/child_process.h"
#include "platform/posix/desktop_services.h"
#include "platform/posix/serial_queue.h"
#include "platform/qt/background_work.h"
#include "platform/qt/identifiers.h"
#include "platform/qt/main_queue.h"
#include "platform/qt/qt_application_host.h"
#include "platform/qt/wall_clock.h"

namespace orvanta {

/// The real services, and the one place that names them all. Needs a QCoreApplication. Its end
/// unwinds every task that still waits; whoever else holds a service lets go of it before.
class Composition {
public:
    /// `environment` outlives this object. `childPidFile`: where to remember what runs; nothing
    /// when another instance may be running.
    Composition(Environment& environment, DesktopServices desktop,
                std::optional<ChildPidFile> childPidFile);
    Composition(const Composition&) = delete;
    Composition& operator=(const Composition&) = delete;

    Platform& platform() { return m_platform; }
    TerminalScreen& screen() { return m_screen; }

private:
    // Tasks wait in the last three. They go first, while what the unwound tasks hold still stands.
    DesktopServices m_desktop;
    QtWallClock m_wallClock;
    QtApplicationHost m_application;
    TerminalScreen m_screen;
    PosixSerialQueueFactory m_serialQueues;
    PosixChildProcessLauncher m_childProcesses;
    QtIdentifiers m_identifiers;
    QtMainQueue m_mainQueue;
    QtBackgroundWork m_backgroundWork;
    HttpSessions m_httpSessions;
    Platform m_platform;
};

} // namespace orvanta
