// SPDX-License-Identifier: MIT
#include "app/desktop_toolkit.h"

#include "app/desktop_application.h"
#include "app/system_tray_icon.h"
#include "platform/posix/desktop_services.h"

namespace orvanta {
namespace {

class WidgetsToolkit : public DesktopToolkit {
public:
    std::unique_ptr<QCoreApplication> makeApplication(int& argc, char** argv,
                                                      int exitStatus) override {
        return makeDesktopApplication(argc, argv, exitStatus);
    }
    std::unique_ptr<TrayHost> makeTrayHost() override { return orvanta::makeTrayHost(); }
    std::unique_ptr<TrayIcon> makeIcon(const TrayHost& host,
                                       std::function<void(MenuEntryId)> choose) override {
        return std::make_unique<SystemTrayIcon>(host, std::move(choose));
    }
};

} // namespace

DesktopToolkit& widgetsToolkit() {
    static WidgetsToolkit toolkit;
    return toolkit;
}

} // namespace orvanta
