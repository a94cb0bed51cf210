# SPDX-License-Identifier: MIT
# As much of the toolkit as the project's CMake asks for, so that it can be configured for macOS. The
# headers are those of this machine's toolkit: ORVANTA_TEST_HEADERS, a list of folders.
if(NOT TARGET Qt6::Core)
    foreach(component Core Gui Widgets Network)
        add_library(Qt6::${component} INTERFACE IMPORTED)
        target_include_directories(Qt6::${component} INTERFACE ${ORVANTA_TEST_HEADERS})
    endforeach()
    add_executable(Qt6::qmake IMPORTED)
    set_target_properties(Qt6::qmake PROPERTIES IMPORTED_LOCATION /no/such/folder/qmake)
endif()

function(qt_add_resources target name)
    cmake_parse_arguments(arg "" "PREFIX" "FILES;OPTIONS" ${ARGN})
    if(NOT TARGET ${target} OR arg_UNPARSED_ARGUMENTS OR NOT arg_PREFIX OR NOT arg_FILES)
        message(FATAL_ERROR "qt_add_resources(${target} ${name} ${ARGN}) is not understood.")
    endif()
endfunction()

foreach(component IN LISTS Qt6_FIND_COMPONENTS)
    if(TARGET Qt6::${component})
        set(Qt6_${component}_FOUND TRUE)
    else()
        set(Qt6_FOUND FALSE)
        set(Qt6_NOT_FOUND_MESSAGE "There is no component ${component} on macOS.")
    endif()
endforeach()
