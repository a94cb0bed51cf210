# SPDX-License-Identifier: MIT
foreach(part gtest gmock)
    add_library(GTest::${part} INTERFACE IMPORTED)
endforeach()
