# Man pages, the packages' documents (copyright, changelog) and the Debian packages.
# `cpack -G DEB` in the build tree makes, for /usr:
#   ukey-uiserver        the server, the tools, the man pages (install component "server")
#   libukey-uiclient1    the shared client library (component "client")
#   libukey-uiclient-dev its header, static library, link and pkg-config file ("devel")
find_program(NY_GZIP gzip REQUIRED)
set(NY_PACKAGING_OUT ${CMAKE_BINARY_DIR}/packaging)

# Debian wants documents compressed with gzip -9n (no name, no time stamp: reproducible).
function(ny_gzip_file src dst)
    add_custom_command(OUTPUT ${dst}
        COMMAND ${NY_GZIP} -9nc ${src} > ${dst}
        DEPENDS ${src}
        COMMENT "gzip ${dst}")
endfunction()

file(GLOB NY_MAN_PAGES CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/man/*.1)
set(NY_PACKAGING_FILES "")
foreach(page ${NY_MAN_PAGES})
    get_filename_component(name ${page} NAME)
    ny_gzip_file(${page} ${NY_PACKAGING_OUT}/man1/${name}.gz)
    list(APPEND NY_PACKAGING_FILES ${NY_PACKAGING_OUT}/man1/${name}.gz)
endforeach()
configure_file(${CMAKE_CURRENT_LIST_DIR}/changelog.in ${NY_PACKAGING_OUT}/changelog @ONLY)
ny_gzip_file(${NY_PACKAGING_OUT}/changelog ${NY_PACKAGING_OUT}/changelog.gz)
list(APPEND NY_PACKAGING_FILES ${NY_PACKAGING_OUT}/changelog.gz)
file(MAKE_DIRECTORY ${NY_PACKAGING_OUT}/man1)
add_custom_target(NyPackagingFiles ALL DEPENDS ${NY_PACKAGING_FILES})

install(DIRECTORY ${NY_PACKAGING_OUT}/man1 DESTINATION ${CMAKE_INSTALL_MANDIR}
        COMPONENT server FILES_MATCHING PATTERN "*.1.gz")
# Every package carries the copyright and changelog in its own documentation folder.
foreach(pair ukey-uiserver:server libukey-uiclient1:client libukey-uiclient-dev:devel)
    string(REPLACE ":" ";" pair ${pair})
    list(GET pair 0 package)
    list(GET pair 1 component)
    install(FILES ${CMAKE_CURRENT_LIST_DIR}/copyright ${NY_PACKAGING_OUT}/changelog.gz
            DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/${package} COMPONENT ${component})
endforeach()

set(CPACK_GENERATOR DEB)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_PACKAGE_NAME ukey-uiserver)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGE_CONTACT "UKey UI server team <ukey-ui@example.org>")
set(CPACK_DEBIAN_PACKAGE_MAINTAINER ${CPACK_PACKAGE_CONTACT})
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)

set(CPACK_DEBIAN_SERVER_PACKAGE_NAME ukey-uiserver)
set(CPACK_DEBIAN_SERVER_PACKAGE_SECTION utils)
set(CPACK_COMPONENT_SERVER_DESCRIPTION "PIN and message dialogs for USB token libraries
A user-interface server for the middleware of USB security tokens: token
libraries send requests over shared memory and the server shows one modal
GTK+ 2 dialog at a time (verify, new or changed PIN, unblock, label, message,
confirmation) and answers with what the person entered.

The package holds the server and the ukey-uictl, ukey-logview and ukey-cfg
tools.")

set(CPACK_DEBIAN_CLIENT_PACKAGE_NAME libukey-uiclient${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_CLIENT_PACKAGE_SECTION libs)
set(CPACK_COMPONENT_CLIENT_DESCRIPTION "client library of the UKey UI server
The library token libraries link to ask the UKey UI server for PIN and
message dialogs: a C interface that starts a server when needed, opens an
interaction session and sends requests.")
# The server is what the library starts.
set(CPACK_DEBIAN_CLIENT_PACKAGE_DEPENDS "ukey-uiserver (= ${PROJECT_VERSION})")
# A shlibs entry for the packages built against it (only this package has a shared library),
# and the ldconfig trigger.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_CLIENT_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_LIST_DIR}/triggers)
set(CPACK_DEBIAN_CLIENT_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(CPACK_DEBIAN_DEVEL_PACKAGE_NAME libukey-uiclient-dev)
set(CPACK_DEBIAN_DEVEL_PACKAGE_SECTION libdevel)
set(CPACK_COMPONENT_DEVEL_DEPENDS client)
set(CPACK_COMPONENT_DEVEL_DESCRIPTION "client library of the UKey UI server (development files)
The C header, the static library, the link to the shared library and the
pkg-config file (ukey-uiclient) for building token libraries that ask the
UKey UI server for PIN and message dialogs.")
include(CPack)
