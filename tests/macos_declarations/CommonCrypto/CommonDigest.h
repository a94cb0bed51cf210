// SPDX-License-Identifier: MIT
// What platform/macos uses of the system header, and no more.
#pragma once

#include <stdint.h>

#define CC_SHA256_DIGEST_LENGTH 32

typedef uint32_t CC_LONG;

typedef struct CC_SHA256state_st {
    CC_LONG state[8];
} CC_SHA256_CTX;

extern "C" int CC_SHA256_Init(CC_SHA256_CTX* context);
extern "C" int CC_SHA256_Update(CC_SHA256_CTX* context, const void* bytes, CC_LONG size);
extern "C" int CC_SHA256_Final(unsigned char* digest, CC_SHA256_CTX* context);
