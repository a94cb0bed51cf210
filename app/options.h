// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <string_view>
#include <vector>

namespace orvanta {

/// What the command line asks for.
struct Options {
    enum class Action { run, showVersion, showHelp, refuse };

    Action action = Action::run;
    bool terminal = false;
    /// What is refused, the first of it; views an argument.
    std::string_view unknown = {};

    bool operator==(const Options&) const = default;
};

/// `arguments` are those after the program's name. Anything unknown is refused, wherever it
/// stands; help goes before version.
Options parseOptions(const std::vector<std::string_view>& arguments);

/// One line, with a line end.
QString versionText();
/// What can be given, with a line end.
QString usageText();
/// Says that `unknown` is no option, then the usage.
QString refusalText(std::string_view unknown);

} // namespace orvanta
