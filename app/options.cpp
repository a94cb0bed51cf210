// SPDX-License-Identifier: MIT
#include "app/options.h"

#include "orvanta_build_constants.h"

namespace orvanta {

Options parseOptions(const std::vector<std::string_view>& arguments) {
    bool help = false;
    bool version = false;
    Options options;
    for (const std::string_view argument : arguments) {
        if (argument == "--terminal") {
            options.terminal = true;
        } else if (argument == "--help") {
            help = true;
        } else if (argument == "--version") {
            version = true;
        } else {
            return {.action = Options::Action::refuse, .unknown = argument};
        }
    }
    if (help) {
        options.action = Options::Action::showHelp;
    } else if (version) {
        options.action = Options::Action::showVersion;
    }
    return options;
}

QString versionText() {
    return QStringLiteral("orvanta-tray %1\n").arg(QLatin1String(build::kVersion));
}

QString usageText() {
    return QStringLiteral("Usage: orvanta-tray [--terminal] [--version] [--help]\n"
                          "\n"
                          "Keeps the Desktop Connector running and shows its state.\n"
                          "\n"
                          "  --terminal  show the menu in this terminal\n"
                          "  --version   print the version and exit\n"
                          "  --help      print this text and exit\n");
}

QString refusalText(std::string_view unknown) {
    return QStringLiteral("orvanta-tray: \"%1\" is no option.\n\n%2")
        .arg(QString::fromLocal8Bit(unknown.data(), static_cast<qsizetype>(unknown.size())),
             usageText());
}

} // namespace orvanta
