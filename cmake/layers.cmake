# One static library per folder. orvex_layer(hid USES base) makes the library orvex_layer_hid of every source file
# in src/hid/. A lower layer calls upwards through functions that it declares and an upper layer defines, so the
# libraries of one program are linked as one group, which the linker searches until nothing is missing.

function(orvex_layer folder)
  cmake_parse_arguments(LAYER "" "" "USES" ${ARGN})
  orvex_layer_target(target ${folder})
  file(GLOB sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/src/${folder}/*.cpp)
  add_library(${target} STATIC ${sources})
  if(ORVEX_SANITIZE AND TARGET library_headers)
    target_precompile_headers(${target} REUSE_FROM library_headers)
  endif()
  target_include_directories(${target} PUBLIC ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR}/include)
  target_include_directories(${target} SYSTEM PUBLIC ${HIDAPI_INCLUDE_DIR})
  target_link_libraries(${target} PUBLIC Threads::Threads)
  foreach(used IN LISTS LAYER_USES)
    orvex_layer_target(used_target ${used})
    target_link_libraries(${target} PUBLIC ${used_target})
  endforeach()
endfunction()

# The target of a layer's folder: hid -> orvex_layer_hid, platform/hidp -> orvex_layer_platform_hidp.
function(orvex_layer_target result folder)
  string(REPLACE "/" "_" name ${folder})
  set(${result} orvex_layer_${name} PARENT_SCOPE)
endfunction()

# Links a program or library with every layer of the plug-in, on one platform, as one group. The platform is named by
# its folder and those it stands on, the highest first.
function(orvex_link_plugin target)
  set(libraries "")
  foreach(folder plugin devicemgr device drivers hid callstate base ${ARGN} platform/hidp platform/common)
    orvex_layer_target(layer ${folder})
    list(APPEND libraries ${layer})
  endforeach()
  list(JOIN libraries "," group)
  target_link_libraries(${target} PRIVATE "$<LINK_GROUP:RESCAN,${group}>" Threads::Threads)
endfunction()

# The exported functions of one folder, as objects: a plug-in library is made of these and of what they need. The
# folder is one of src/, or another that is named by its path from where this is called.
function(orvex_exports folder)
  orvex_layer_target(target ${folder})
  orvex_exports_folder(path ${folder})
  file(GLOB sources CONFIGURE_DEPENDS ${path}/*.cpp)
  add_library(${target} OBJECT ${sources})
  target_include_directories(${target} PUBLIC ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR}/include)
  target_include_directories(${target} SYSTEM PUBLIC ${HIDAPI_INCLUDE_DIR})
endfunction()

function(orvex_exports_folder result folder)
  set(path ${PROJECT_SOURCE_DIR}/src/${folder})
  if(NOT EXISTS ${path})
    set(path ${CMAKE_CURRENT_SOURCE_DIR}/${folder})
  endif()
  set(${result} ${path} PARENT_SCOPE)
endfunction()

# A shared library made of the exports of the folders named. Nothing is visible but the functions in the exports.txt of
# those folders.
function(orvex_exporting_library target)
  add_library(${target} SHARED)
  set(names "")
  foreach(folder ${ARGN})
    orvex_layer_target(exports ${folder})
    target_sources(${target} PRIVATE $<TARGET_OBJECTS:${exports}>)
    orvex_exports_folder(path ${folder})
    set(list_file ${path}/exports.txt)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${list_file})
    file(STRINGS ${list_file} lines REGEX "^[A-Za-z_]")
    list(APPEND names ${lines})
  endforeach()
  list(JOIN names ";\n    " globals)
  set(map ${PROJECT_BINARY_DIR}/${target}.map)
  file(CONFIGURE OUTPUT ${map} CONTENT "{\n  global:\n    @globals@;\n  local: *;\n};\n" @ONLY)
  set_property(TARGET ${target} PROPERTY LINK_DEPENDS ${map})
  # -Bsymbolic: the plug-in's hid_* stay its own, whatever the host links. nodelete: a thread that is still on its
  # way out after the host's dlclose must find its code mapped.
  target_link_options(${target} PRIVATE LINKER:--version-script=${map} LINKER:-Bsymbolic LINKER:-z,nodelete
                      LINKER:-z,relro LINKER:-z,now)
  set_target_properties(${target} PROPERTIES LINKER_LANGUAGE CXX LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib
                        VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
endfunction()

# A plug-in library as a host loads it: the exports of the folders named, over the layers on one platform. The drivers
# are all in it, those too that no headset is given: the linker would leave out what nothing refers to.
function(orvex_plugin_library target)
  cmake_parse_arguments(PLUGIN "" "" "PLATFORM;EXPORTS" ${ARGN})
  orvex_exporting_library(${target} ${PLUGIN_EXPORTS})
  target_sources(${target} PRIVATE $<TARGET_OBJECTS:orvex_layer_drivers>)
  orvex_link_plugin(${target} ${PLUGIN_PLATFORM})
endfunction()

# A library for clients to use as orvex::headset_plugin, whether they embed this project or find it installed.
function(orvex_for_clients target)
  target_include_directories(${target} INTERFACE $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
                                                 $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  target_compile_features(${target} INTERFACE cxx_std_17)
  string(REGEX REPLACE "^orvex_" "" name ${target})
  set_target_properties(${target} PROPERTIES EXPORT_NAME ${name})
  add_library(orvex::${name} ALIAS ${target})
endfunction()
