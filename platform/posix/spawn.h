// SPDX-License-Identifier: MIT
#pragma once

#include "platform/child_process.h"
#include "platform/posix/file_descriptor.h"

#include <sys/types.h>

namespace orvanta {

/// A running child that nobody watches yet, and our ends of its two output pipes: non-blocking,
/// closed on exec.
struct SpawnedProcess {
    pid_t pid;
    FileDescriptor standardOutput;
    FileDescriptor standardError;
};

/// Starts the program of `options` with exactly what `ChildProcessLauncher` promises; the
/// callbacks are not looked at. Throws `PlatformError` when the system refuses; nothing is left
/// open or running then.
SpawnedProcess spawnProcess(const ChildProcessOptions& options);

} // namespace orvanta
