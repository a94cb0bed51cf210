# SPDX-License-Identifier: MIT

# Orvanta.app. CMake's own bundles are named after their executable, which is named orvanta-tray on every
# system, so this one is laid out by hand: in the build it runs from where it is and links to the libraries
# of the machine; the target `dmg` makes a copy that brings them along.
set(orvanta_bundle ${CMAKE_BINARY_DIR}/stage/Orvanta.app)

# orvanta_mac_icon(OUTPUT SVG): renders the picture in every size that the Finder asks for.
function(orvanta_mac_icon output svg)
    find_program(ORVANTA_ICONUTIL iconutil REQUIRED)
    set(iconset ${CMAKE_CURRENT_BINARY_DIR}/Orvanta.iconset)
    set(render_commands)
    foreach(size 16 32 128 256 512)
        math(EXPR double "${size} * 2")
        foreach(picture "${size}:icon_${size}x${size}.png" "${double}:icon_${size}x${size}@2x.png")
            string(REPLACE ":" ";" picture ${picture})
            list(GET picture 0 pixels)
            list(GET picture 1 name)
            list(APPEND render_commands COMMAND ${ORVANTA_RSVG_CONVERT}
                --width ${pixels} --height ${pixels} --output ${iconset}/${name} ${svg})
        endforeach()
    endforeach()
    cmake_path(GET output PARENT_PATH folder)
    add_custom_command(
        OUTPUT ${output}
        COMMAND ${CMAKE_COMMAND} -E make_directory ${iconset} ${folder}
        ${render_commands}
        COMMAND ${ORVANTA_ICONUTIL} --convert icns --output ${output} ${iconset}
        DEPENDS ${svg}
        COMMENT "Rendering the application's icon"
        VERBATIM)
endfunction()

# orvanta_mac_bundle(TARGET): makes the executable TARGET the one of the bundle, adds what else belongs
# there, the target `dmg`, and the bundle to what is installed.
function(orvanta_mac_bundle target)
    set(version ${PROJECT_VERSION})
    set_target_properties(${target} PROPERTIES
        RUNTIME_OUTPUT_DIRECTORY ${orvanta_bundle}/Contents/MacOS)
    configure_file(${CMAKE_SOURCE_DIR}/packaging/macos/Info.plist.in
        ${orvanta_bundle}/Contents/Info.plist @ONLY)
    set(icon ${orvanta_bundle}/Contents/Resources/Orvanta.icns)
    orvanta_mac_icon(${icon} ${CMAKE_SOURCE_DIR}/app/icons/orvanta-tray.svg)
    add_custom_target(bundle ALL DEPENDS ${icon})
    add_dependencies(bundle ${target} stage)

    set(qt_programs)
    if(TARGET Qt6::qmake)
        get_target_property(qmake Qt6::qmake IMPORTED_LOCATION)
        cmake_path(GET qmake PARENT_PATH qt_programs)
    endif()
    find_program(ORVANTA_MACDEPLOYQT macdeployqt HINTS ${qt_programs})
    set(ORVANTA_SHIPPED_RUNTIME ${orvanta_bundle}/Contents/Resources CACHE PATH
        "Runtime in the disk image: a folder with local-server/ and node-runtime/node; the demo's if not changed")
    add_custom_target(dmg
        COMMAND ${CMAKE_SOURCE_DIR}/packaging/macos/make-dmg.sh
            ${orvanta_bundle} ${ORVANTA_SHIPPED_RUNTIME}
            ${CMAKE_BINARY_DIR}/Orvanta-${version}-arm64.dmg ${ORVANTA_MACDEPLOYQT}
        USES_TERMINAL
        VERBATIM)
    add_dependencies(dmg bundle)

    install(DIRECTORY ${orvanta_bundle} DESTINATION . USE_SOURCE_PERMISSIONS)
endfunction()
