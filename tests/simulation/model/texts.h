// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace orvanta::simulation {

/// Whether the menu may ever show `text` as its runtime line, or as its error line.
bool isRuntimeLine(const QString& text);
bool isErrorLine(const QString& text);

} // namespace orvanta::simulation
