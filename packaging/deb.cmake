# The Debian packages, one a component: `make deb`, in a build whose prefix is /usr.
set(QVLEDGER_PACKAGE_VERSION ${PROJECT_VERSION} CACHE STRING "The packages' version")
set(debian ${CMAKE_CURRENT_SOURCE_DIR}/debian)

# What a package has and an installation from source has not.
install(FILES registry.reg DESTINATION /etc/qvledger COMPONENT tool EXCLUDE_FROM_ALL)
install(DIRECTORY DESTINATION /var/lib/qvledger/var/acct COMPONENT tool EXCLUDE_FROM_ALL)
install(DIRECTORY DESTINATION /var/lib/qvledger/share/oid COMPONENT tool EXCLUDE_FROM_ALL)

# package(COMPONENT NAME SECTION DESCRIPTION): the first line of the description is its summary.
function(package component name section description)
  install(FILES ${debian}/copyright DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name}
    COMPONENT ${component} EXCLUDE_FROM_ALL)
  install(FILES ${debian}/changelog DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name}
    COMPONENT ${component} EXCLUDE_FROM_ALL)
  string(TOUPPER ${component} key)
  set(CPACK_DEBIAN_${key}_PACKAGE_NAME ${name} PARENT_SCOPE)
  set(CPACK_DEBIAN_${key}_PACKAGE_SECTION ${section} PARENT_SCOPE)
  set(CPACK_DEBIAN_${key}_DESCRIPTION "${description}" PARENT_SCOPE)
endfunction()

package(tool qvledger net "report the accounting logs of a print server
Reads the binary accounting logs that the servers of a networked print system
write, and prints one line for each print job: qvledger as tab-separated text
with the names of the attributes above it, qvledger-json as JSON Lines.
qvledger-check tells which logs are whole, and saves what damage left of them.
mksample lays a sample print system, to try them on.

Each log holds its own access list and is shown to those alone whom it admits.")
package(runtime libala1 libs "Accounting Log Access facility - shared library
Opens the accounting logs of a print server for those whom their access lists
admit, reads them record by record and delivers every attribute as text.")
package(dev libala-dev libdevel "Accounting Log Access facility - development files
Opens the accounting logs of a print server for those whom their access lists
admit, reads them record by record and delivers every attribute as text.

This package holds what programs in C and C++ are built with.")
package(doc qvledger-doc doc "report the accounting logs of a print server - documents
The architecture of qvledger, the formats of the files that it reads and
writes, what the access lists of the logs protect, and example files.")

set(CPACK_DEBIAN_TOOL_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_TOOL_PACKAGE_SUGGESTS "qvledger-doc, bash-completion")
set(CPACK_DEBIAN_TOOL_PACKAGE_CONTROL_EXTRA ${debian}/conffiles ${debian}/postinst ${debian}/postrm)
# What the library needs is found by scripts/package: if CPack did it, it would add scripts that call ldconfig, which the
# trigger does already.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS "\$ENV{LIBRARY_DEPENDS}")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${debian}/shlibs ${debian}/symbols ${debian}/triggers)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "libala1 (= ${QVLEDGER_PACKAGE_VERSION})")
set(CPACK_DEBIAN_DEV_PACKAGE_SUGGESTS qvledger-doc)
set(CPACK_DEBIAN_DOC_PACKAGE_ARCHITECTURE all)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME qvledger)
set(CPACK_PACKAGE_VERSION ${QVLEDGER_PACKAGE_VERSION})
set(CPACK_PACKAGE_CONTACT "The qvledger maintainers <maintainers@qvledger.example>")
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR}/packages)
set(CPACK_SET_DESTDIR ON) # for the destinations outside the prefix
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL tool runtime dev doc)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_SOURCE_DIR}/deb_stage.cmake)
include(CPack)
