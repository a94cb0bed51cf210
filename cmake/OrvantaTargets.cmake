# SPDX-License-Identifier: MIT

# What every target of ours is compiled with.
add_library(orvanta_options INTERFACE)
target_include_directories(orvanta_options INTERFACE ${CMAKE_SOURCE_DIR} ${CMAKE_BINARY_DIR}/generated)
target_compile_definitions(orvanta_options INTERFACE
    QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_KEYWORDS QT_NO_FOREACH)
target_compile_options(orvanta_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wconversion
    -Wno-sign-conversion $<$<BOOL:${ORVANTA_WARNINGS_AS_ERRORS}>:-Werror>)
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
    # GCC 12 sees overruns inside its own string class below -O2.
    target_compile_options(orvanta_options INTERFACE -Wno-array-bounds -Wno-restrict -Wno-stringop-overflow)
endif()
if(CMAKE_CXX_COMPILER_ID MATCHES Clang)
    target_compile_options(orvanta_options INTERFACE -Wno-unused-lambda-capture)
endif()
if(ORVANTA_SANITIZE)
    target_compile_options(orvanta_options INTERFACE
        -fsanitize=${ORVANTA_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    target_link_options(orvanta_options INTERFACE -fsanitize=${ORVANTA_SANITIZE})
endif()
if(ORVANTA_SANITIZE MATCHES thread)
    # Built in, because the tests start programs with environments of their own.
    add_library(orvanta_sanitizer_defaults STATIC ${CMAKE_SOURCE_DIR}/tests/suppressions/thread_sanitizer.cpp)
    # The sanitizer itself has the same functions, so nothing would be taken from an archive by need.
    target_link_libraries(orvanta_options INTERFACE
        "$<LINK_LIBRARY:WHOLE_ARCHIVE,orvanta_sanitizer_defaults>")
endif()

# orvanta_unwatched_by_thread_sanitizer(SOURCE ...): for what the toolkit generates and calls on threads of
# its own, under locks that the sanitizer cannot see.
function(orvanta_unwatched_by_thread_sanitizer)
    if(ORVANTA_SANITIZE MATCHES thread)
        set_source_files_properties(${ARGN} PROPERTIES
            COMPILE_OPTIONS -fno-sanitize=thread SKIP_PRECOMPILE_HEADERS ON)
    endif()
endfunction()

# orvanta_pch(NAME HEADER LINKS ...): a header parsed once for all targets that name it in
# REUSE_FROM.
function(orvanta_pch name header)
    set(source ${CMAKE_BINARY_DIR}/generated/${name}.cpp)
    file(CONFIGURE OUTPUT ${source} CONTENT "#include <${header}>\n")
    add_library(${name} OBJECT ${source})
    target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR}/cmake)
    target_link_libraries(${name} PRIVATE orvanta_options ${ARGN})
    target_precompile_headers(${name} PRIVATE ${CMAKE_SOURCE_DIR}/cmake/${header})
endfunction()

# orvanta_library(NAME SOURCES ... LINKS ...): one room of the house as a static library.
function(orvanta_library name)
    cmake_parse_arguments(arg "" "" "SOURCES;LINKS" ${ARGN})
    add_library(${name} STATIC ${arg_SOURCES})
    target_link_libraries(${name} PUBLIC orvanta_options ${arg_LINKS})
    if(ORVANTA_PRECOMPILED_HEADERS AND TARGET orvanta_pch)
        target_precompile_headers(${name} REUSE_FROM orvanta_pch)
    endif()
endfunction()

# orvanta_test(NAME SOURCES ... LINKS ... [PROPERTIES ...]): a GoogleTest program whose cases CTest
# runs one by one. A case is stopped after 60 seconds unless PROPERTIES says otherwise.
function(orvanta_test name)
    cmake_parse_arguments(arg "" "" "SOURCES;LINKS;PROPERTIES" ${ARGN})
    add_executable(${name} ${arg_SOURCES})
    target_link_libraries(${name} PRIVATE ${arg_LINKS} GTest::gmock orvanta_test_main)
    if(ORVANTA_PRECOMPILED_HEADERS)
        target_precompile_headers(${name} REUSE_FROM orvanta_test_pch)
    endif()
    gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST NO_PRETTY_VALUES TEST_PREFIX ${name}/
        PROPERTIES TIMEOUT 60 ${arg_PROPERTIES})
endfunction()
