# SPDX-License-Identifier: MIT

# QCoro6::Core, from a package where there is one. Homebrew has none. What is used of QCoro is headers
# alone, so those are taken from its sources and nothing of it is built.
find_package(QCoro6 0.8 QUIET COMPONENTS Core)
if(QCoro6_FOUND)
    return()
endif()

set(ORVANTA_QCORO_URL https://github.com/qcoro/qcoro/archive/refs/tags/v0.8.0.tar.gz CACHE STRING
    "Where the sources of QCoro come from when no package has it; may be a file")
# That of the sources which Debian's package of this version was made from, the one all of this is tested with.
set(ORVANTA_QCORO_SHA256 28f90d817f42352084242f7a1ff090c5cff92359e4dbecea8f04d39ebcf630f8 CACHE STRING
    "SHA-256 of the sources of QCoro")
include(FetchContent)
FetchContent_Declare(qcoro
    URL ${ORVANTA_QCORO_URL}
    URL_HASH SHA256=${ORVANTA_QCORO_SHA256}
    DOWNLOAD_EXTRACT_TIMESTAMP ON
    # A folder without a build, so that none is added to this one.
    SOURCE_SUBDIR .headers-alone)
message(STATUS "QCoro: no package, taking its headers from ${ORVANTA_QCORO_URL}")
FetchContent_MakeAvailable(qcoro)

set(forwarding ${CMAKE_BINARY_DIR}/generated/qcoro)
file(CONFIGURE OUTPUT ${forwarding}/QCoroTask CONTENT "#include <qcorotask.h>\n")
add_library(QCoro6::Core INTERFACE IMPORTED GLOBAL)
target_include_directories(QCoro6::Core INTERFACE ${forwarding})
target_link_libraries(QCoro6::Core INTERFACE Qt6::Core)
foreach(header qcorotask.h coroutine.h concepts_p.h)
    file(GLOB_RECURSE found ${qcoro_SOURCE_DIR}/qcoro/${header})
    if(NOT found)
        message(FATAL_ERROR "The sources of QCoro at ${ORVANTA_QCORO_URL} hold no ${header}.")
    endif()
    list(GET found 0 found)
    cmake_path(GET found PARENT_PATH folder)
    target_include_directories(QCoro6::Core INTERFACE ${folder})
endforeach()
