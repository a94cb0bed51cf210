# SPDX-License-Identifier: MIT

# orvanta_changelog_date(VARIABLE): the date of the project's version, YYYY-MM-DD, from its heading in
# CHANGELOG.md. Stops when the newest entry is of another version: then one of the two was forgotten.
function(orvanta_changelog_date variable)
    set(changelog ${CMAKE_SOURCE_DIR}/CHANGELOG.md)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${changelog})
    file(STRINGS ${changelog} headings REGEX "^## ")
    list(GET headings 0 newest)
    if(NOT newest MATCHES "^## ([0-9.]+), ([0-9]+-[0-9][0-9]-[0-9][0-9])$"
            OR NOT CMAKE_MATCH_1 STREQUAL PROJECT_VERSION)
        message(FATAL_ERROR
            "CHANGELOG.md begins with \"${newest}\" instead of \"## ${PROJECT_VERSION}, YYYY-MM-DD\".")
    endif()
    set(${variable} ${CMAKE_MATCH_2} PARENT_SCOPE)
endfunction()
