// SPDX-License-Identifier: MIT
#pragma once

#include "platform/environment.h"

#include <QString>

namespace orvanta {

/// The value of a variable that names an absolute path; empty otherwise.
QString absolutePath(const Environment& environment, const char* name);

/// The current user's home: HOME when that is an absolute path, else what the password database
/// says. Throws `PlatformError` when neither knows one.
QString homeDirectory(const Environment& environment);

} // namespace orvanta
