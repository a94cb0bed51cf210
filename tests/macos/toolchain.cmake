# SPDX-License-Identifier: MIT
# Makes CMake configure for macOS on a machine that is none. Nothing can be built with it: the compiler
# is this machine's, and what CMake would try out with it or ask it is answered here.
set(CMAKE_SYSTEM_NAME Darwin)
set(CMAKE_SYSTEM_VERSION 22)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_OSX_SYSROOT / CACHE PATH "")
set(CMAKE_INSTALL_NAME_TOOL true CACHE FILEPATH "")
find_program(ORVANTA_TEST_CLANG clang++ REQUIRED)
foreach(language CXX OBJCXX)
    set(CMAKE_${language}_COMPILER ${ORVANTA_TEST_CLANG})
    set(CMAKE_${language}_COMPILER_FORCED TRUE)
endforeach()
set(CMAKE_SIZEOF_VOID_P 8)
set(CMAKE_HAVE_LIBC_PTHREAD TRUE CACHE BOOL "")
