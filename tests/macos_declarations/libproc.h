// SPDX-License-Identifier: MIT
// What platform/macos uses of the system header, and no more.
#pragma once

#include <stdint.h>

#define PROC_PIDTBSDINFO 3
#define PROC_PIDPATHINFO_MAXSIZE (4 * 1024)

struct proc_bsdinfo {
    uint32_t pbi_pid;
    uint64_t pbi_start_tvsec;
    uint64_t pbi_start_tvusec;
};

extern "C" int proc_pidinfo(int pid, int flavour, uint64_t argument, void* buffer, int size);
extern "C" int proc_pidpath(int pid, void* buffer, uint32_t size);
