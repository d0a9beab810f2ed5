# The imported target XxHash::XxHash.
find_path(XxHash_INCLUDE_DIR xxhash.h)
find_library(XxHash_LIBRARY xxhash)
mark_as_advanced(XxHash_INCLUDE_DIR XxHash_LIBRARY)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(XxHash REQUIRED_VARS XxHash_LIBRARY XxHash_INCLUDE_DIR)

if(XxHash_FOUND AND NOT TARGET XxHash::XxHash)
  add_library(XxHash::XxHash UNKNOWN IMPORTED)
  set_target_properties(XxHash::XxHash PROPERTIES
    IMPORTED_LOCATION ${XxHash_LIBRARY} INTERFACE_INCLUDE_DIRECTORIES ${XxHash_INCLUDE_DIR})
endif()
