# SPDX-License-Identifier: MIT

# What is compiled for other people's machines: hardened as distributions do, and the same bytes
# whatever folder it is built in.
option(ORVANTA_DISTRIBUTION "Harden the program and keep the build's folders out of it" OFF)

if(ORVANTA_DISTRIBUTION)
    # Of several maps that fit the last one counts, and the build is usually inside the sources.
    add_compile_options(
        -ffile-prefix-map=${CMAKE_SOURCE_DIR}=.
        -ffile-prefix-map=${CMAKE_BINARY_DIR}=build
        -fstack-protector-strong)
    add_compile_definitions(_FORTIFY_SOURCE=2)
    if(NOT APPLE)
        add_compile_options(-fstack-clash-protection)
        add_link_options(-Wl,-z,relro -Wl,-z,now)
    endif()
endif()
