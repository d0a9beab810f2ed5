# The imported target Qrencode::Qrencode.
find_path(Qrencode_INCLUDE_DIR qrencode.h)
find_library(Qrencode_LIBRARY qrencode)
mark_as_advanced(Qrencode_INCLUDE_DIR Qrencode_LIBRARY)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(Qrencode REQUIRED_VARS Qrencode_LIBRARY Qrencode_INCLUDE_DIR)

if(Qrencode_FOUND AND NOT TARGET Qrencode::Qrencode)
  add_library(Qrencode::Qrencode UNKNOWN IMPORTED)
  set_target_properties(Qrencode::Qrencode PROPERTIES
    IMPORTED_LOCATION ${Qrencode_LIBRARY} INTERFACE_INCLUDE_DIRECTORIES ${Qrencode_INCLUDE_DIR})
endif()
