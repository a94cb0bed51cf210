// SPDX-License-Identifier: MIT
#include "app/run_tray.h"

#include "app/composition.h"
#include "app/desktop_toolkit.h"
#include "app/orvanta_menu_bar_view.h"
#include "app/orvanta_tray_mac_app.h"
#include "app/terminal_front_end.h"
#include "app/tray_front_end.h"
#include "base/platform_error.h"
#include "platform/posix/instance_lock.h"
#include "platform/posix/run_time_directory.h"
#include "platform/posix/signal_watch.h"

#include <QCoreApplication>
#include <QFileInfo>

#include <cstdio>
#include <optional>

namespace orvanta {
namespace {

using Complaint = std::function<void(const QString&)>;

void complain(const QString& reason) {
    std::fprintf(stderr, "orvanta-tray: %s\n", reason.toUtf8().constData());
}

QString stateRoot(const Locations& locations) {
    return locations.applicationSupport() + QStringLiteral("/Orvanta");
}

/// Nothing when there can be no lock: better two instances than none.
std::optional<InstanceLock> takeLock(const Environment& environment, const Locations& locations) {
    try {
        return InstanceLock(instanceLockDirectory(environment.variables(), stateRoot(locations)));
    } catch (const PlatformError& error) {
        complain(error.description());
        return std::nullopt;
    }
}

/// Only for the one instance: another one's children are no leftovers.
std::optional<ChildPidFile> openPidFile(const std::optional<InstanceLock>& lock,
                                        const Environment& environment,
                                        const Locations& locations) {
    const auto directory =
        lock ? runTimeDirectory(environment.variables(), stateRoot(locations)) : std::nullopt;
    return directory ? std::make_optional<ChildPidFile>(*directory) : std::nullopt;
}

/// The menu on the desktop, and what it hangs on.
class DesktopFrontEnd {
public:
    DesktopFrontEnd(DesktopToolkit& toolkit, OrvantaMenuBarView& view, MainQueue& queue)
        : m_host(toolkit.makeTrayHost()),
          m_frontEnd(
              view, *m_host, queue,
              [this, &toolkit, &view] {
                  return toolkit.makeIcon(*m_host, [&view](MenuEntryId id) { view.activate(id); });
              },
              complain) {}

private:
    std::unique_ptr<TrayHost> m_host;
    TrayFrontEnd m_frontEnd;
};

void handleSignal(int signal, Composition& composition) {
    switch (signal) {
    case SIGWINCH:
        return composition.screen().handleResize();
    case SIGCONT:
        return composition.screen().handleContinue();
    default:
        return composition.platform().application.terminate();
    }
}

int runMainLoop(Environment& environment, DesktopServices desktop,
                std::optional<ChildPidFile> childPidFile, DesktopToolkit* toolkit,
                Complaint& tell) {
    // Made first and so undone last: a second signal must not kill what is already leaving.
    std::function<void(int)> onSignal;
    SignalWatch signals([&onSignal](int signal) { onSignal(signal); });

    Composition composition(environment, std::move(desktop), std::move(childPidFile));
    const Platform& platform = composition.platform();
    const OrvantaTrayMacApp application(composition.platform());
    OrvantaMenuBarView view(application.manager(), platform.mainQueue, platform.application);
    std::optional<DesktopFrontEnd> onDesktop;
    std::optional<TerminalFrontEnd> inTerminal;
    if (toolkit != nullptr) {
        onDesktop.emplace(*toolkit, view, platform.mainQueue);
    } else {
        tell = [&composition](const QString& line) { composition.screen().printLine(line); };
        inTerminal.emplace(view, composition.screen(), platform.mainQueue, STDIN_FILENO,
                           STDOUT_FILENO);
    }

    onSignal = [&composition](int signal) { handleSignal(signal, composition); };
    signals.watchUnlessIgnored(SIGHUP);
    for (const int signal : {SIGTERM, SIGINT, SIGWINCH, SIGCONT}) {
        signals.watch(signal);
    }
    return QCoreApplication::exec();
}

} // namespace

int runTray(Environment& environment, DesktopToolkit* toolkit) {
    // A line for the user; where it goes changes once there is a front end.
    Complaint tell = complain;
    DesktopServices desktop =
        makeDesktopServices(environment, [&tell](const QString& line) { tell(line); });
    const QString resources = desktop.locations->resourceRoot();
    if (!QFileInfo(resources).isDir()) {
        complain(QStringLiteral("the resource directory “%1” does not exist.").arg(resources));
        return 1;
    }
    const std::optional<InstanceLock> lock = takeLock(environment, *desktop.locations);
    if (lock && !lock->isHeld()) {
        std::puts("Orvanta is already running.");
        return 0;
    }
    auto childPidFile = openPidFile(lock, environment, *desktop.locations);
    return runMainLoop(environment, std::move(desktop), std::move(childPidFile), toolkit, tell);
}

} // namespace orvanta
