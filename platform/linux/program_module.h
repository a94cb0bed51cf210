// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace orvanta {

/// A part of this program that is a library of its own, ../lib/orvanta-tray/modules/NAME.so from
/// the folder of the executable, because not every run needs it. Loads it, for the life of the
/// process, and gives the address of its `function`. Throws `PlatformError` when it is missing or
/// cannot be loaded.
void* moduleFunction(const QString& name, const char* function);

} // namespace orvanta
