// SPDX-License-Identifier: MIT
#pragma once

#include <spawn.h>

namespace orvanta {

/// What Linux and macOS spell differently.

/// `pipe`, with both ends closing on exec. Returns false and sets errno on failure.
bool openPipe(int (&ends)[2]);

/// Makes room for that many bytes in a pipe, as far as the system lets us.
void enlargePipe(int end, int bytes);

/// Lets all threads allocate from one heap. Those beside the main thread hardly allocate at all,
/// and a heap for each of them costs pages and time when it starts.
void shareOneHeap();

/// The LC_CTYPE for UTF-8 and no country. Debian and macOS have it however little is installed.
const char* plainUtf8();

/// Makes a spawned child start with nothing open but descriptors 0, 1 and 2 as its file actions
/// left them. Call after those have been added and after the flags have been set.
void closeAllOtherDescriptors(posix_spawnattr_t& attributes, posix_spawn_file_actions_t& actions);

} // namespace orvanta
