# Precompiled headers. Most of the time that it takes to compile a file here goes into the headers of the standard
# library and of GoogleTest. They are compiled once for all programs of a kind.
#
# They save time and nothing else: every file includes what it uses. The product's layers are compiled without them but
# under the sanitizers, so that a missing include is noticed, and so that a project that embeds them and the packages
# compile just what the tests did. CMAKE_DISABLE_PRECOMPILE_HEADERS switches them off.
set(orvex_standard_headers
    <algorithm> <array> <atomic> <chrono> <cstdint> <cstdio> <functional> <map> <memory> <mutex> <optional> <span>
    <string> <string_view> <system_error> <thread> <utility> <vector>)

# Beside the headers, most of the time goes into templates that nearly every file instantiates. Several files are therefore
# compiled as one unit where the headers are precompiled. Names in the unnamed namespaces of one folder differ.
option(ORVEX_UNITY "Compile several files as one unit in tests and tools" ON)

# Of debugging information, tests and tools have what a backtrace needs.
set(orvex_line_numbers $<$<CONFIG:Debug>:-g1>)

# orvex_precompiled_headers(NAME LIBRARY|PROGRAM headers...): headers for the libraries or programs that say
# orvex_compile_together(... NAME). The two kinds differ in how their addresses are made.
function(orvex_precompiled_headers name kind)
  # A target has to have a source.
  set(source ${CMAKE_CURRENT_BINARY_DIR}/${name}.cpp)
  file(CONFIGURE OUTPUT ${source} CONTENT "")
  add_library(${name} OBJECT ${source})
  target_precompile_headers(${name} PRIVATE ${ARGN})
  target_compile_options(${name} PRIVATE ${orvex_line_numbers})
  if(kind STREQUAL PROGRAM)
    set_target_properties(${name} PROPERTIES POSITION_INDEPENDENT_CODE OFF)
    target_compile_options(${name} PRIVATE ${CMAKE_CXX_COMPILE_OPTIONS_PIE})
  endif()
endfunction()

# orvex_compile_together(TARGET HEADERS): compiles a target with these headers, if there are such, several files at once.
function(orvex_compile_together target headers)
  if(TARGET ${headers})
    target_precompile_headers(${target} REUSE_FROM ${headers})
    target_compile_options(${target} PRIVATE ${orvex_line_numbers})
    set_target_properties(${target} PROPERTIES UNITY_BUILD ${ORVEX_UNITY} UNITY_BUILD_BATCH_SIZE 8)
  endif()
endfunction()
