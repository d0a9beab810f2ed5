# One interface target carries every flag that all of our code is compiled with. Nothing that hosts
# link names it, so none of the flags reaches them.
add_library(ox_flags INTERFACE)
target_include_directories(ox_flags INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_options(ox_flags INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow
  # Progress values are exact single-precision results: no contraction, no reassociation.
  -ffp-contract=off -fno-fast-math)
# g++ 12 sees overlaps and unset members in optimised strings and variants where there are none.
if(NOT OX_WERROR AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  target_compile_options(ox_flags INTERFACE -Wno-restrict -Wno-maybe-uninitialized)
endif()
if(OX_WERROR)
  target_compile_options(ox_flags INTERFACE -Werror)
endif()
if(OX_SANITIZE)
  target_compile_options(ox_flags INTERFACE -fsanitize=${OX_SANITIZE} -fno-omit-frame-pointer
                                            -fno-sanitize-recover=all)
  target_link_options(ox_flags INTERFACE -fsanitize=${OX_SANITIZE})
endif()

# What a fuzzer steers by. Only the programs of fuzz/ bring what these calls lead to.
if(OX_FUZZ)
  target_compile_options(ox_flags INTERFACE -fsanitize=fuzzer-no-link)
endif()

if(OX_SANITIZE MATCHES "thread" AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # g++ 12 takes the members of a variant that are not in use for uninitialised ones here; the other
  # builds keep the warning.
  target_compile_options(ox_flags INTERFACE -Wno-maybe-uninitialized)
endif()

# A cache that cannot be written fails every compilation: one file is compiled through it first.
if(PROJECT_IS_TOP_LEVEL AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  find_program(OX_CCACHE ccache)
  file(WRITE ${PROJECT_BINARY_DIR}/ccache_probe.cpp "int probe;\n")
  execute_process(
    COMMAND ${OX_CCACHE} ${CMAKE_CXX_COMPILER} -c ccache_probe.cpp -o ccache_probe.o
    WORKING_DIRECTORY ${PROJECT_BINARY_DIR}
    RESULT_VARIABLE probed OUTPUT_QUIET ERROR_QUIET)
  if(NOT probed EQUAL 0)
    set(OX_CCACHE "" CACHE FILEPATH "" FORCE)
  endif()
  set(CMAKE_CXX_COMPILER_LAUNCHER ${OX_CCACHE})
endif()
find_program(OX_LLD ld.lld)
if(OX_LLD AND PROJECT_IS_TOP_LEVEL)
  target_link_options(ox_flags INTERFACE -fuse-ld=lld)
endif()
