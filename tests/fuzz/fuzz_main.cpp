// SPDX-License-Identifier: MIT
#include "fuzz/fuzz_target.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace orvanta::fuzz {

void require(bool condition, const char* what) {
    if (!condition) {
        std::fprintf(stderr, "Broken: %s.\n", what);
        std::abort();
    }
}

} // namespace orvanta::fuzz

/// Called by the fuzzing engine with every input it makes up.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    orvanta::fuzz::tryInput(
        QByteArray(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size)));
    return 0;
}
