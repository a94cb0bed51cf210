// SPDX-License-Identifier: MIT
// What platform/macos uses of the system header, and no more.
#pragma once

#include <stdint.h>

extern "C" int _NSGetExecutablePath(char* path, uint32_t* size);
