# The Debian packages, one per component: `make deb`, in a build with the prefix /usr.
set(QVLEDGER_PACKAGE_VERSION ${PROJECT_VERSION} CACHE STRING "The packages' version")
set(debian ${CMAKE_CURRENT_SOURCE_DIR}/debian)

# Only in the packages, not in an installation from source.
install(FILES registry.reg DESTINATION /etc/qvledger COMPONENT tool EXCLUDE_FROM_ALL)

# package(COMPONENT NAME SECTION DESCRIPTION): the first line of the description is the summary.
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
with attribute names as column headers, qvledger-json as JSON Lines.
qvledger-sum adds up jobs, sheets and costs by owner, printer or month.
qvledger-check reports damaged logs and saves their intact records.
mksample creates a sample print system for trying the programs.

Each log contains its own access list, and the programs show it only to users
whom the list admits.")
package(runtime libala1 libs "Accounting Log Access facility - shared library
Opens the accounting logs of a print server if their access lists admit the
caller, reads them record by record and returns every attribute as text.")
package(dev libala-dev libdevel "Accounting Log Access facility - development files
Opens the accounting logs of a print server if their access lists admit the
caller, reads them record by record and returns every attribute as text.

This package contains the files for building C and C++ programs with it.")
package(doc qvledger-doc doc "report the accounting logs of a print server - documents
Describes the architecture of qvledger, the formats of the files that it reads
and writes, and what the access lists of the logs protect. Has example files.")

set(CPACK_DEBIAN_TOOL_PACKAGE_SHLIBDEPS ON)
# For postinst; systemd provides both.
set(CPACK_DEBIAN_TOOL_PACKAGE_DEPENDS
  "systemd-standalone-sysusers | systemd-sysusers, systemd-standalone-tmpfiles | systemd-tmpfiles")
set(CPACK_DEBIAN_TOOL_PACKAGE_SUGGESTS "qvledger-doc, bash-completion")
set(CPACK_DEBIAN_TOOL_PACKAGE_CONTROL_EXTRA ${debian}/conffiles ${debian}/postinst ${debian}/postrm)
# scripts/package finds the dependencies of the library.  CPack would also add scripts that call ldconfig, which the
# trigger already does.
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
