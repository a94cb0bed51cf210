// SPDX-License-Identifier: MIT
// What platform/posix uses of the system header on macOS, and no more.
#pragma once

#include <stdint.h>

#define CLONE_NOOWNERCOPY 0x0002

extern "C" int fclonefileat(int source, int directory, const char* name, uint32_t flags);
