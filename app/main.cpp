// SPDX-License-Identifier: MIT
#include "app/desktop_toolkit.h"
#include "app/options.h"
#include "app/run_tray.h"
#include "app/terminal_application.h"
#include "base/platform_error.h"
#include "platform/posix/process_environment.h"
#include "platform/posix/process_setup.h"

#include <QCoreApplication>

#include <algorithm>
#include <cstdio>

namespace {

constexpr int kFailure = 1;
constexpr int kWrongUsage = 2;

int print(std::FILE* file, const QString& text, int exitStatus) {
    std::fputs(text.toUtf8().constData(), file);
    return exitStatus;
}

int run(int argc, char** argv, bool inTerminal, orvanta::Environment& environment) {
    orvanta::DesktopToolkit* toolkit = inTerminal ? nullptr : &orvanta::desktopToolkit();
    const auto application = inTerminal ? orvanta::makeTerminalApplication(argc, argv)
                                        : toolkit->makeApplication(argc, argv, kFailure);
    return orvanta::runTray(environment, toolkit);
}

} // namespace

int main(int argc, char** argv) {
    // Before any library sets variables or opens files for itself.
    orvanta::ProcessEnvironment environment;
    orvanta::setUpProcess();
    const orvanta::Options options = orvanta::parseOptions({argv + std::min(argc, 1), argv + argc});
    switch (options.action) {
    case orvanta::Options::Action::showVersion:
        return print(stdout, orvanta::versionText(), 0);
    case orvanta::Options::Action::showHelp:
        return print(stdout, orvanta::usageText(), 0);
    case orvanta::Options::Action::refuse:
        return print(stderr, orvanta::refusalText(options.unknown), kWrongUsage);
    case orvanta::Options::Action::run:
        break;
    }
    int exitStatus = kFailure;
    try {
        exitStatus = run(argc, argv, options.terminal, environment);
    } catch (const orvanta::PlatformError& error) {
        print(stderr, QStringLiteral("orvanta-tray: %1\n").arg(error.description()), exitStatus);
    }
    if (!options.terminal) {
        orvanta::leaveProcess(exitStatus);
    }
    return exitStatus;
}
