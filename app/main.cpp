// SPDX-License-Identifier: MIT
#include "app/desktop_application.h"
#include "app/options.h"
#include "app/run_tray.h"
#include "base/platform_error.h"
#include "platform/posix/process_environment.h"
#include "platform/posix/process_setup.h"

#include <algorithm>
#include <cstdio>

namespace {

constexpr int kFailure = 1;
constexpr int kWrongUsage = 2;

int print(std::FILE* file, const QString& text, int exitStatus) {
    std::fputs(text.toUtf8().constData(), file);
    return exitStatus;
}

int run(orvanta::Environment& environment, orvanta::FrontEndKind frontEnd) {
    try {
        return orvanta::runTray(environment, frontEnd);
    } catch (const orvanta::PlatformError& error) {
        return print(stderr, QStringLiteral("orvanta-tray: %1\n").arg(error.description()),
                     kFailure);
    }
}

int runOnDesktop(int argc, char** argv, orvanta::Environment& environment) {
    const auto application = orvanta::makeDesktopApplication(argc, argv, kFailure);
    return run(environment, orvanta::FrontEndKind::desktop);
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
    if (options.terminal) {
        const QCoreApplication application(argc, argv);
        return run(environment, orvanta::FrontEndKind::terminal);
    }
    orvanta::leaveProcess(runOnDesktop(argc, argv, environment));
}
