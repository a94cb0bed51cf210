// SPDX-License-Identifier: MIT
#pragma once

#include "base/platform_error.h"

namespace orvanta {

/// A failed system call as an error of domain "posix": `code` is its errno, `failure` says what
/// did not work ("“/x” could not be opened"). The system's reason and a full stop are appended.
PlatformError posixError(int code, const QString& failure);

} // namespace orvanta
