// SPDX-License-Identifier: MIT
#pragma once

#include "platform/posix/file_descriptor.h"

#include <QByteArray>

#include <sys/stat.h>

#include <array>

namespace orvanta {

/// What Linux and macOS do differently with files.

/// A new file `name` in `directory` that shares the contents of `source` until one of them is
/// written to. Nothing is open, and nothing was made, where the file system cannot do that or the
/// name is taken.
FileDescriptor createClone(int source, int directory, const QByteArray& name);

/// Copies from one open file to another within the kernel, from the present offsets on, as far as
/// that goes; the rest is left to the caller. 0 or the system's error number.
int copyInKernel(int from, int to);

/// `rename` that fails with EEXIST rather than replace. 0 or the system's error number.
int renameExclusively(const QByteArray& from, const QByteArray& to);

/// Time of access and of modification, as `futimens` takes them.
std::array<timespec, 2> timesOf(const struct stat& status);

} // namespace orvanta
