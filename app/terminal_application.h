// SPDX-License-Identifier: MIT
#pragma once

#include <memory>

class QCoreApplication;

namespace orvanta {

/// The toolkit's application for the terminal front end; `argc` and `argv` outlive it. Changes the
/// process's locale, see `useEnglish`. Called by main.
std::unique_ptr<QCoreApplication> makeTerminalApplication(int& argc, char** argv);

} // namespace orvanta
