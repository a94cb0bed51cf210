# SPDX-License-Identifier: MIT
# The manual page, the changelog and the licence, compressed as distributions want them.
find_program(ORVANTA_GZIP gzip REQUIRED)

set(compressed)
# compress(SOURCE NAME): makes NAME in the build's folder, without the time and name of SOURCE.
function(compress source name)
    set(result ${CMAKE_CURRENT_BINARY_DIR}/${name})
    add_custom_command(
        OUTPUT ${result}
        COMMAND ${ORVANTA_GZIP} -9nc ${source} > ${result}
        DEPENDS ${source}
        VERBATIM)
    set(compressed ${compressed} ${result} PARENT_SCOPE)
endfunction()

configure_file(orvanta-tray.1.in orvanta-tray.1 @ONLY)
compress(${CMAKE_CURRENT_BINARY_DIR}/orvanta-tray.1 orvanta-tray.1.gz)
compress(${CMAKE_SOURCE_DIR}/CHANGELOG.md changelog.gz)
add_custom_target(documents ALL DEPENDS ${compressed})

install(FILES ${CMAKE_CURRENT_BINARY_DIR}/orvanta-tray.1.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/changelog.gz copyright DESTINATION ${CMAKE_INSTALL_DOCDIR})
