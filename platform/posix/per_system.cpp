// SPDX-License-Identifier: MIT
#include "platform/posix/per_system.h"

#include <fcntl.h>
#ifndef __APPLE__
#include <malloc.h>
#endif
#include <unistd.h>

namespace orvanta {

#ifdef __APPLE__

bool openPipe(int (&ends)[2]) {
    if (::pipe(ends) != 0) {
        return false;
    }
    ::fcntl(ends[0], F_SETFD, FD_CLOEXEC);
    ::fcntl(ends[1], F_SETFD, FD_CLOEXEC);
    return true;
}

/// A pipe grows with what is written to it.
void enlargePipe(int, int) {}

void shareOneHeap() {}

const char* plainUtf8() {
    return "UTF-8";
}

void closeAllOtherDescriptors(posix_spawnattr_t& attributes, posix_spawn_file_actions_t&) {
    short flags = 0;
    ::posix_spawnattr_getflags(&attributes, &flags);
    ::posix_spawnattr_setflags(&attributes,
                               static_cast<short>(flags | POSIX_SPAWN_CLOEXEC_DEFAULT));
}

#else

bool openPipe(int (&ends)[2]) {
    return ::pipe2(ends, O_CLOEXEC) == 0;
}

void enlargePipe(int end, int bytes) {
    ::fcntl(end, F_SETPIPE_SZ, bytes);
}

void shareOneHeap() {
    ::mallopt(M_ARENA_MAX, 1);
}

const char* plainUtf8() {
    return "C.UTF-8";
}

void closeAllOtherDescriptors(posix_spawnattr_t&, posix_spawn_file_actions_t& actions) {
    ::posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1);
}

#endif

} // namespace orvanta
