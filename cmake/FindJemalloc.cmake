# The imported target Jemalloc::Jemalloc.
find_library(Jemalloc_LIBRARY jemalloc)
mark_as_advanced(Jemalloc_LIBRARY)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(Jemalloc REQUIRED_VARS Jemalloc_LIBRARY)

if(Jemalloc_FOUND AND NOT TARGET Jemalloc::Jemalloc)
  add_library(Jemalloc::Jemalloc UNKNOWN IMPORTED)
  set_target_properties(Jemalloc::Jemalloc PROPERTIES IMPORTED_LOCATION ${Jemalloc_LIBRARY})
endif()
