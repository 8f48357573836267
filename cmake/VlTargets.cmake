# What every target of this tree has in common.

# What the sanitizers of this build add to a compilation.
set(VL_SANITIZE_OPTIONS "")
# The libraries that are archives elsewhere are shared under sanitizers: a shared library calls its own copies of inline
# functions, an archive those of the first object that has them, which may be that of a test without instrumentation.
set(VL_ARCHIVE STATIC)
if(VL_SANITIZE)
  set(VL_SANITIZE_OPTIONS -fsanitize=${VL_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  set(VL_ARCHIVE SHARED)
endif()

# Precompiles what the sources of a target include most, once for each target: the options of the targets differ. A header
# that a source forgets is found by the builds without.
function(_vl_precompile_headers target)
  get_target_property(sources ${target} SOURCES)
  list(LENGTH sources count)
  if(count LESS 5)
    return()  # it would take longer than it saves
  endif()
  target_precompile_headers(${target} PRIVATE
    <algorithm> <array> <cmath> <cstdint> <cstring> <filesystem> <functional> <limits> <map> <memory> <optional> <string> <string_view>
    <utility> <vector>)
  # The same bytes each time, for the compiler cache.
  target_compile_options(${target} PRIVATE "$<$<CXX_COMPILER_ID:Clang>:SHELL:-Xclang -fno-pch-timestamp>")
endfunction()

# vl_defaults(target): the language, warnings, sanitizers and exact floating point.
function(vl_defaults target)
  target_compile_features(${target} PUBLIC cxx_std_17)
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wpedantic -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-qual -Wformat=2
    $<$<BOOL:${VL_WARNINGS_AS_ERRORS}>:-Werror>
    # A fused multiply-add rounds once where the formulas of this library round twice.
    -ffp-contract=off)
  # The tests are compiled alike in every build, see tests/CMakeLists.txt.
  if(NOT VL_IS_TEST_CODE)
    target_compile_definitions(${target} PRIVATE
      $<$<OR:$<BOOL:${VL_CHECK_LIFETIMES}>,$<CONFIG:Debug>>:VL_CHECK_LIFETIMES>)
    if(VL_SANITIZE)
      # With more optimization, instrumented code takes at least twice as long to compile, more than the tests gain from it.
      target_compile_options(${target} PRIVATE $<IF:$<CXX_COMPILER_ID:Clang>,-O0,-Og> ${VL_SANITIZE_OPTIONS})
    endif()
  endif()
  if(VL_PRECOMPILE_HEADERS AND NOT VL_IS_TEST_CODE)
    _vl_precompile_headers(${target})
  endif()
  if(VL_JOIN_SOURCES AND NOT VL_IS_TEST_CODE)
    # As many at once as halve the time; of more, the last ones of a target would keep a core idle.
    set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 8)
    # GCC takes what is in unnamed namespaces of included files for that of headers.
    target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-Wno-subobject-linkage>)
  endif()
  if(VL_SANITIZE)
    target_link_options(${target} PRIVATE -fsanitize=${VL_SANITIZE})
  endif()
  if(VL_COVERAGE)
    target_compile_options(${target} PRIVATE --coverage)
    target_link_options(${target} PRIVATE --coverage)
  endif()
endfunction()

# vl_library(target): a shared library that exports what its export macro marks, nothing else.
function(vl_library target)
  vl_defaults(${target})
  set_target_properties(${target} PROPERTIES
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR}
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON
    POSITION_INDEPENDENT_CODE ON)
  # Installed side by side, the libraries find each other wherever the prefix is.
  if(APPLE)
    set_target_properties(${target} PROPERTIES INSTALL_RPATH "@loader_path")
  else()
    set_target_properties(${target} PROPERTIES INSTALL_RPATH "$ORIGIN")
  endif()
  if(NOT APPLE AND NOT WIN32)
    # Calls within a library reach its own functions, and may be inlined; nobody replaces single ones from outside.
    target_compile_options(${target} PRIVATE -fno-semantic-interposition)
    target_link_options(${target} PRIVATE LINKER:-Bsymbolic-functions)
    target_link_options(${target} PRIVATE LINKER:--version-script=${PROJECT_SOURCE_DIR}/cmake/exports.map)
    set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${PROJECT_SOURCE_DIR}/cmake/exports.map)
  endif()
endfunction()
