# SPDX-License-Identifier: MIT
# The Debian package. What it depends on is read from the executable, but for the programs that the
# tray starts.
set(ORVANTA_PACKAGE_REVISION 1 CACHE STRING
    "Counts packages of one version of the program, for instance with newer shipped runtimes")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME orvanta-tray)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_VENDOR "The Orvanta developers")
set(CPACK_PACKAGE_CONTACT "The Orvanta developers <maintainers@orvanta.example>")
set(CPACK_PACKAGE_HOMEPAGE_URL https://orvanta.example)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "status icon that keeps the Desktop Connector running")
set(CPACK_PACKAGE_DESCRIPTION "\
It starts a local companion server, the Desktop Connector, watches it,
starts it again whenever it exits, and shows in the panel whether it is
offline, not paired or online. The menu behind the icon pairs, signs out,
restarts, opens the dashboard, and moves the connector to newer versions
or back. Machines without a desktop show the same menu in a terminal.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
# The modes of folders must not hang on the umask of whoever builds.
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE ${ORVANTA_PACKAGE_REVISION})
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "ca-certificates, curl, libarchive-tools, nodejs (>= 18)")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "qt6-wayland, xdg-utils")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_SOURCE_DIR}/finish_debian_tree.cmake)
set(CPACK_ORVANTA_DEBIAN_FILES ${CMAKE_CURRENT_SOURCE_DIR}/debian)
include(CPack)
