// SPDX-License-Identifier: MIT
#include "platform/posix/desktop_services.h"

#include "platform/linux/archive_tool.h"
#include "platform/linux/browser.h"
#include "platform/linux/content_digest.h"
#include "platform/linux/locations.h"
#include "platform/linux/login_item.h"
#include "platform/linux/own_program.h"
#include "platform/linux/running_executable.h"

#include <QCoreApplication>
#include <QFile>

namespace orvanta {

DesktopServices makeDesktopServices(const Environment& environment,
                                    std::function<void(const QString&)> complain) {
    const QString executable = runningExecutable();
    const QString program =
        ownProgram(environment.variables(),
                   QFile::encodeName(QCoreApplication::arguments().value(0)), executable);
    return {.locations = std::make_unique<LinuxLocations>(environment, executable),
            .browser = std::make_unique<LinuxBrowser>(environment, std::move(complain)),
            .loginItem = std::make_unique<LinuxLoginItem>(environment, program),
            .becomeAccessory = [] {}};
}

std::unique_ptr<ArchiveTool> makeArchiveTool() {
    return std::make_unique<BsdtarArchiveTool>();
}

std::unique_ptr<ContentDigest> makeContentDigest() {
    return std::make_unique<LoadedContentDigest>();
}

} // namespace orvanta
