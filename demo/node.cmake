# SPDX-License-Identifier: MIT
# Sets ORVANTA_NODE to the Node executable itself; what is on PATH may be a wrapper of a version manager.
if(NOT ORVANTA_NODE)
    find_program(ORVANTA_NODE_COMMAND NAMES node nodejs REQUIRED)
    execute_process(
        COMMAND ${ORVANTA_NODE_COMMAND} -p "process.execPath + ' ' + process.versions.node"
        OUTPUT_VARIABLE found OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    string(REGEX MATCH "^(.*) ([0-9.]+)$" found "${found}")
    set(path ${CMAKE_MATCH_1})
    if(CMAKE_MATCH_2 VERSION_LESS 18)
        message(FATAL_ERROR "Node ${CMAKE_MATCH_2} at ${path} is too old; 18 or newer is needed.")
    endif()
    set(ORVANTA_NODE ${path} CACHE FILEPATH "Node executable that is staged and runs the demo's tests")
endif()
