// SPDX-License-Identifier: MIT
#include "app/terminal_application.h"

#include "platform/posix/process_setup.h"

#include <QCoreApplication>

namespace orvanta {

std::unique_ptr<QCoreApplication> makeTerminalApplication(int& argc, char** argv) {
    useEnglish();
    return std::make_unique<QCoreApplication>(argc, argv);
}

} // namespace orvanta
