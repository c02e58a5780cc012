# SPDX-License-Identifier: Apache-2.0
# Debian packages by CPack: the program, the library to run with, and what programs are built with. See script/package.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "The quarry authors <quarry@quarry.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # the first line of each description below
set(CPACK_COMPONENTS_ALL quarry libquarry libquarry-dev)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SECTION science)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEBIAN_QUARRY_PACKAGE_NAME quarry)
set(CPACK_DEBIAN_QUARRY_DESCRIPTION "reader and lister of seismological volumes in SEED format
Lists every blockette and data record of a volume, shows what it holds, checks
it, and writes it as JSON Lines.")
set(CPACK_DEBIAN_QUARRY_PACKAGE_CONTROL_EXTRA ${PROJECT_BINARY_DIR}/conffiles)
file(WRITE ${PROJECT_BINARY_DIR}/conffiles "/etc/quarry/quarry.pf\n")

set(CPACK_DEBIAN_LIBQUARRY_PACKAGE_NAME libquarry${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_LIBQUARRY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBQUARRY_DESCRIPTION "reader of seismological volumes in SEED format - library
Gives programs the blockettes, data records and samples of a volume.")
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)

set(CPACK_DEBIAN_LIBQUARRY-DEV_PACKAGE_NAME libquarry-dev)
set(CPACK_DEBIAN_LIBQUARRY-DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_LIBQUARRY-DEV_PACKAGE_DEPENDS "libquarry${PROJECT_VERSION_MAJOR} (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_LIBQUARRY-DEV_DESCRIPTION "reader of seismological volumes in SEED format - headers
Headers, examples, and files for CMake and pkg-config.")

set(CPACK_DEBIAN_LIBQUARRY_PACKAGE_CONTROL_EXTRA ${PROJECT_BINARY_DIR}/triggers)
file(WRITE ${PROJECT_BINARY_DIR}/triggers "activate-noawait ldconfig\n")

# What a package of Debian documents: licence and changes.
file(WRITE ${PROJECT_BINARY_DIR}/copyright "Copyright 2026 The quarry authors\n
quarry is under the Apache License, version 2.0: /usr/share/common-licenses/Apache-2.0\n")
string(TIMESTAMP day "%a, %d %b %Y 00:00:00 +0000" UTC)
file(WRITE ${PROJECT_BINARY_DIR}/changelog "quarry (${PROJECT_VERSION}) unstable; urgency=medium\n
  * What changed for users is in CHANGELOG.md of the source.\n
 -- ${CPACK_PACKAGE_CONTACT}  ${day}\n")
find_program(gzip gzip REQUIRED)
execute_process(COMMAND ${gzip} -9nf ${PROJECT_BINARY_DIR}/changelog COMMAND_ERROR_IS_FATAL ANY)
set(of_package_quarry quarry)
set(of_package_libquarry libquarry${PROJECT_VERSION_MAJOR})
set(of_package_libquarry-dev libquarry-dev)
foreach(component quarry libquarry libquarry-dev)
  set(folder ${CMAKE_INSTALL_DATADIR}/doc/${of_package_${component}})
  install(FILES ${PROJECT_BINARY_DIR}/copyright DESTINATION ${folder} COMPONENT ${component})
  install(FILES ${PROJECT_BINARY_DIR}/changelog.gz DESTINATION ${folder} COMPONENT ${component})
endforeach()
# Debian's pages are compressed.
foreach(component quarry libquarry-dev)
  install(CODE "file(GLOB_RECURSE pages \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_MANDIR}/*.[1-9]\")
    execute_process(COMMAND ${gzip} -9nf \${pages} COMMAND_ERROR_IS_FATAL ANY)" COMPONENT ${component})
endforeach()
include(CPack)
