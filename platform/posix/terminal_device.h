// SPDX-License-Identifier: MIT
#pragma once

#include "platform/posix/file_descriptor.h"

#include <optional>

namespace orvanta {

struct TerminalSize {
    int columns;
    int rows;

    bool operator==(const TerminalSize&) const = default;
};

/// Nothing when `descriptor` is no terminal; 80 x 24 when the terminal does not know.
std::optional<TerminalSize> terminalSize(int descriptor);

/// False only when `descriptor` is this process's terminal and another job owns it now: reading
/// would stop the process, and the cursor is somebody else's.
bool isInForeground(int descriptor);

/// True when `input` is the terminal of `output` and shows there what is typed.
bool isEchoed(int input, int output);

/// `descriptor`, a terminal or a pipe, opened once more in `accessMode` (O_RDONLY or O_WRONLY) and
/// non-blocking. The flag cannot be set on `descriptor` itself: the shell and other programs share
/// it. Not open for anything else and where the system does not allow it.
FileDescriptor reopenNonBlocking(int descriptor, int accessMode);

} // namespace orvanta
