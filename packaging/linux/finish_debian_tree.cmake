# SPDX-License-Identifier: MIT
# Run by CPack on what it has installed for the package: adds what only a Debian package has.
cmake_minimum_required(VERSION 3.25)

set(tree ${CPACK_TEMPORARY_INSTALL_DIRECTORY})
set(version ${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})
# The time of the commit when SOURCE_DATE_EPOCH gives it.
string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)

set(changelog ${tree}/usr/share/doc/${CPACK_PACKAGE_NAME}/changelog.Debian)
configure_file(${CPACK_ORVANTA_DEBIAN_FILES}/changelog.in ${changelog} @ONLY)
execute_process(COMMAND gzip -9nf ${changelog} COMMAND_ERROR_IS_FATAL ANY)
file(COPY_FILE ${CPACK_ORVANTA_DEBIAN_FILES}/lintian-overrides ${tree}/lintian-overrides)
file(MAKE_DIRECTORY ${tree}/usr/share/lintian/overrides)
file(RENAME ${tree}/lintian-overrides ${tree}/usr/share/lintian/overrides/${CPACK_PACKAGE_NAME})

# Sources that were checked out under another umask make the same package.
execute_process(COMMAND chmod -R u=rwX,go=rX ${tree} COMMAND_ERROR_IS_FATAL ANY)
