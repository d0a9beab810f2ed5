# The files by which others find the libraries, in the build tree, and with OX_INSTALL all that
# cmake --install puts under the prefix. Three components: library (what a program needs to run),
# development and program.
include(CMakePackageConfigHelpers)

set(configFolder ${CMAKE_INSTALL_LIBDIR}/cmake/OxMacAddressBookSDK)
configure_package_config_file(cmake/OxMacAddressBookSDKConfig.cmake.in
  OxMacAddressBookSDKConfig.cmake INSTALL_DESTINATION ${configFolder}
  NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(OxMacAddressBookSDKConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)

file(COPY cmake/FindDeflate.cmake cmake/FindXxHash.cmake DESTINATION ${PROJECT_BINARY_DIR})

# The same text for either tree; a build tree has no prefix to be moved with.
function(ox_pkg_config file prefix libraryFolder includeFolder)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/OxMacAddressBookSDK.pc.in ${file} @ONLY)
endfunction()
ox_pkg_config(${PROJECT_BINARY_DIR}/pkgconfig/OxMacAddressBookSDK.pc
  ${PROJECT_BINARY_DIR} ${PROJECT_BINARY_DIR}/ox ${PROJECT_SOURCE_DIR})

if(NOT OX_INSTALL)
  return()
endif()

install(TARGETS OxMacAddressBookSDK EXPORT OxMacAddressBookSDKTargets
  LIBRARY COMPONENT library NAMELINK_COMPONENT development)
install(TARGETS ox_headers EXPORT OxMacAddressBookSDKTargets
  FILE_SET HEADERS COMPONENT development)
install(TARGETS OxMacAddressBookSDKStatic EXPORT OxMacAddressBookSDKStaticTargets
  ARCHIVE COMPONENT development)

foreach(targets OxMacAddressBookSDKTargets OxMacAddressBookSDKStaticTargets)
  export(EXPORT ${targets} NAMESPACE OxMacAddressBookSDK:: FILE ${PROJECT_BINARY_DIR}/${targets}.cmake)
  install(EXPORT ${targets} NAMESPACE OxMacAddressBookSDK:: DESTINATION ${configFolder}
    COMPONENT development)
endforeach()
install(FILES
  ${PROJECT_BINARY_DIR}/OxMacAddressBookSDKConfig.cmake
  ${PROJECT_BINARY_DIR}/OxMacAddressBookSDKConfigVersion.cmake
  cmake/FindDeflate.cmake
  cmake/FindXxHash.cmake
  DESTINATION ${configFolder} COMPONENT development)

# The prefix is found from where the file lies.
file(RELATIVE_PATH upToPrefix /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" upToPrefix ${upToPrefix})
ox_pkg_config(${PROJECT_BINARY_DIR}/installed.pc
  "\${pcfiledir}/${upToPrefix}" "\${prefix}/${CMAKE_INSTALL_LIBDIR}"
  "\${prefix}/${CMAKE_INSTALL_INCLUDEDIR}")
install(FILES ${PROJECT_BINARY_DIR}/installed.pc RENAME OxMacAddressBookSDK.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
