// SPDX-License-Identifier: MIT
// What platform/macos uses of the system header, and no more. The numbers are of no meaning here.
#pragma once

#include <stdint.h>
#include <time.h>

#define EVFILT_PROC (-5)
#define EVFILT_USER (-10)
#define EV_ADD 0x0001
#define EV_ONESHOT 0x0010
#define NOTE_EXIT 0x80000000
#define NOTE_TRIGGER 0x01000000

struct kevent {
    uintptr_t ident;
    int16_t filter;
    uint16_t flags;
    uint32_t fflags;
    intptr_t data;
    void* udata;
};

#define EV_SET(event, id, whichFilter, whichFlags, filterFlags, value, context)                    \
    do {                                                                                           \
        (event)->ident = (id);                                                                     \
        (event)->filter = (whichFilter);                                                           \
        (event)->flags = (whichFlags);                                                             \
        (event)->fflags = (filterFlags);                                                           \
        (event)->data = (value);                                                                   \
        (event)->udata = (context);                                                                \
    } while (0)

extern "C" int kqueue(void);
extern "C" int kevent(int queue, const struct kevent* changes, int changeCount,
                      struct kevent* events, int eventCount, const struct timespec* timeout);
