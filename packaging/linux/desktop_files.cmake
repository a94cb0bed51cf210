# SPDX-License-Identifier: MIT
# What menus and software centres show.
configure_file(com.orvanta.tray.metainfo.xml.in com.orvanta.tray.metainfo.xml @ONLY)
install(FILES com.orvanta.tray.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/com.orvanta.tray.metainfo.xml
    DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)

set(theme ${CMAKE_INSTALL_DATADIR}/icons/hicolor)
set(drawing ${CMAKE_SOURCE_DIR}/app/icons/orvanta-tray.svg)
install(FILES ${drawing} DESTINATION ${theme}/scalable/apps)
# The sizes that menus, task bars and software centres look for.
set(pictures)
foreach(size 16 22 24 32 48 64 128 256)
    set(picture ${CMAKE_CURRENT_BINARY_DIR}/${size}/orvanta-tray.png)
    file(MAKE_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}/${size})
    add_custom_command(
        OUTPUT ${picture}
        COMMAND ${ORVANTA_RSVG_CONVERT} --width ${size} --height ${size} --output ${picture} ${drawing}
        DEPENDS ${drawing}
        VERBATIM)
    list(APPEND pictures ${picture})
    install(FILES ${picture} DESTINATION ${theme}/${size}x${size}/apps)
endforeach()
add_custom_target(application_icons ALL DEPENDS ${pictures})
