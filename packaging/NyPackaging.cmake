# Man pages, the package's documents (copyright, changelog) and the Debian package settings.
# `cpack -G DEB` in the build tree makes ukey-uiserver_<version>_<arch>.deb for /usr.
find_program(NY_GZIP gzip REQUIRED)
set(NY_DOC_DIR ${CMAKE_INSTALL_DATAROOTDIR}/doc/ukey-uiserver)
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
        FILES_MATCHING PATTERN "*.1.gz")
install(FILES ${CMAKE_CURRENT_LIST_DIR}/copyright ${NY_PACKAGING_OUT}/changelog.gz
        DESTINATION ${NY_DOC_DIR})

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME ukey-uiserver)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGE_CONTACT "UKey UI server team <ukey-ui@example.org>")
set(CPACK_DEBIAN_PACKAGE_MAINTAINER ${CPACK_PACKAGE_CONTACT})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "PIN and message dialogs for USB token libraries")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION "A user-interface server for the middleware of USB security tokens: token
libraries send requests over shared memory and the server shows one modal
GTK+ 2 dialog at a time (verify, new or changed PIN, unblock, label, message,
confirmation) and answers with what the person entered.

The package holds the server, the ukey-uictl, ukey-logview and ukey-cfg tools,
and the ukey-uiclient library (shared and static, C header, pkg-config file)
that token libraries link.")
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The shared client library: a shlibs entry for the packages built against it, and the
# ldconfig trigger lintian asks for.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_LIST_DIR}/triggers)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
include(CPack)
