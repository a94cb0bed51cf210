// SPDX-License-Identifier: MIT
#include "app/composition.h"

#include "platform/posix/exit_watch.h"
#include "platform/posix/file_manager.h"

#include <unistd.h>

#include <utility>

namespace orvanta {
namespace {

/// TERM is not set by everything that is called a terminal.
bool knowsCursor(const Environment& environment) {
    const QByteArray terminal = environment.variables().value("TERM").value_or(QByteArray());
    return !terminal.isEmpty() && terminal != "dumb";
}

/// What jobs on the worker thread use. A job that is under way at the end of the process outlasts
/// everything that ends in order, so these never end.
struct WorkerServices {
    PosixFileManager files;
    std::unique_ptr<ArchiveTool> archiveTool = makeArchiveTool();
    std::unique_ptr<ContentDigest> contentDigest = makeContentDigest();
};

WorkerServices& workerServices() {
    static auto* const services = new WorkerServices;
    return *services;
}

} // namespace

Composition::Composition(Environment& environment, DesktopServices desktop,
                         std::optional<ChildPidFile> childPidFile)
    : m_desktop(std::move(desktop)), m_application(m_desktop.becomeAccessory),
      m_screen(STDOUT_FILENO, knowsCursor(environment)),
      m_childProcesses(watchExit, std::move(childPidFile)),
      m_httpSessions(environment.variables()), m_platform{.mainQueue = m_mainQueue,
                                                          .childProcesses = m_childProcesses,
                                                          .httpSessions = m_httpSessions,
                                                          .serialQueues = m_serialQueues,
                                                          .files = workerServices().files,
                                                          .locations = *m_desktop.locations,
                                                          .environment = environment,
                                                          .wallClock = m_wallClock,
                                                          .loginItem = *m_desktop.loginItem,
                                                          .browser = *m_desktop.browser,
                                                          .application = m_application,
                                                          .standardOutput = m_screen,
                                                          .backgroundWork = m_backgroundWork,
                                                          .archiveTool =
                                                              *workerServices().archiveTool,
                                                          .identifiers = m_identifiers,
                                                          .contentDigest =
                                                              *workerServices().contentDigest} {}

} // namespace orvanta
