# Debian packages of what is installed, one for each component: cpack in a tree that was configured
# with the preset package. scripts/check_packages tries them.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME oxmacaddressbooksdk)
set(CPACK_PACKAGE_CONTACT "The maintainers of OxMacAddressBookSDK <maintainers@oxmacaddressbooksdk.example>")
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL library development program)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/ox)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY "=")

set(soname ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME liboxmacaddressbooksdk${soname})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/cmake/debian/triggers)
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION
"contact manager's view of every address book of a store
 The address books of a durable contact store, one SQLite file, through one
 neutral contact model. This package holds the shared library.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME liboxmacaddressbooksdk-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS
  "libsqlite3-dev, libicu-dev, libjpeg-dev, libpng-dev, libtiff-dev, zlib1g-dev, libdeflate-dev, libxxhash-dev, libcurl4-openssl-dev, libexpat1-dev")
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS library)
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
"contact manager's view of every address book of a store (development)
 The address books of a durable contact store, one SQLite file, through one
 neutral contact model. This package holds the headers and the static library,
 which needs the suggested packages to be linked.")

set(CPACK_DEBIAN_PROGRAM_PACKAGE_NAME oxcontacts)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SECTION utils)
set(CPACK_COMPONENT_PROGRAM_DEPENDS library)
set(CPACK_COMPONENT_PROGRAM_DESCRIPTION
"address books on the command line
 Lists, edits, imports and exports the address books of a durable contact
 store: one SQLite file, no desktop. Keeps them in step with CardDAV servers
 and folders of vCards, by a user timer where it is enabled.")

# What every Debian package has to say of itself.
find_program(OX_GZIP gzip REQUIRED)
file(READ LICENSE licence)
string(FIND "${licence}" "Permission" start)
string(SUBSTRING "${licence}" ${start} -1 licence)
string(STRIP "${licence}" licence)
string(REPLACE "\n\n" "\n.\n" licence "${licence}")
string(REPLACE "\n" "\n " licence " ${licence}")
configure_file(cmake/debian/copyright.in debian/copyright @ONLY)
configure_file(cmake/debian/changelog.in debian/changelog @ONLY)
execute_process(COMMAND ${OX_GZIP} -9nfk changelog WORKING_DIRECTORY ${PROJECT_BINARY_DIR}/debian
  COMMAND_ERROR_IS_FATAL ANY)
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${component} upper)
  install(FILES ${PROJECT_BINARY_DIR}/debian/copyright ${PROJECT_BINARY_DIR}/debian/changelog.gz
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${CPACK_DEBIAN_${upper}_PACKAGE_NAME}
    COMPONENT ${component})
endforeach()

include(CPack)
