# How every target of this project is compiled.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM)
  # Paths relative to the source tree, so that another checkout finds what this one compiled. The sloppiness is what ccache
  # asks for where headers are precompiled.
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env CCACHE_BASEDIR=${PROJECT_SOURCE_DIR} CCACHE_NOHASHDIR=1
                                  CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime
                                  ${CCACHE_PROGRAM})
endif()

add_compile_definitions(ORVEX_CONFIGURED_VENDOR_ID=${ORVEX_VENDOR_ID})
add_compile_options(-Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow)
if(ORVEX_WERROR)
  add_compile_options(-Werror)
endif()
if(CMAKE_CXX_COMPILER_ID MATCHES Clang)
  add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-Wthread-safety>)
endif()
# What ccache needs to know a file that is compiled with precompiled headers.
if(CMAKE_CXX_COMPILER_ID MATCHES Clang)
  add_compile_options("$<$<COMPILE_LANGUAGE:CXX>:SHELL:-Xclang -fno-pch-timestamp>")
else()
  add_compile_options(-fpch-preprocess)
endif()
if(ORVEX_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
if(ORVEX_SANITIZE)
  add_compile_options(-fsanitize=${ORVEX_SANITIZE} -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${ORVEX_SANITIZE})
  if(ORVEX_SANITIZE MATCHES undefined)
    add_compile_options(-fno-sanitize-recover=all)
  endif()
endif()
