# SPDX-License-Identifier: MIT
# The user unit names the executable by its path, which is known only when it is installed.
install(CODE "
    set(prefix \"\${CMAKE_INSTALL_PREFIX}\")
    get_filename_component(prefix \"\${prefix}\" ABSOLUTE)
    set(program \"\${prefix}/${CMAKE_INSTALL_BINDIR}/orvanta-tray\")
    configure_file(\"${CMAKE_CURRENT_SOURCE_DIR}/orvanta-tray.service.in\"
        \"${CMAKE_CURRENT_BINARY_DIR}/orvanta-tray.service\" @ONLY)")
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/orvanta-tray.service DESTINATION lib/systemd/user)
