// SPDX-License-Identifier: MIT
#include "app/options.h"

#include "orvanta_build_constants.h"

#include <algorithm>

namespace orvanta {

Options parseOptions(const std::vector<std::string_view>& arguments) {
    const auto given = [&arguments](std::string_view option) {
        return std::count(arguments.begin(), arguments.end(), option);
    };
    const auto terminal = given("--terminal");
    const auto help = given("--help");
    const auto version = given("--version");

    Options options{.terminal = terminal > 0};
    if (static_cast<std::size_t>(terminal + help + version) != arguments.size()) {
        options.action = Options::Action::refuse;
    } else if (help > 0) {
        options.action = Options::Action::showHelp;
    } else if (version > 0) {
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

} // namespace orvanta
