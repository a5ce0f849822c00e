# Debian packages, one for each component of the installation; packaging/debian/build makes them. What they depend on is
# found by dpkg-shlibdeps, from the libraries that the programs are linked with and from those that the plug-in loads by
# name.
find_program(DPKG_SHLIBDEPS dpkg-shlibdeps)
if(NOT DPKG_SHLIBDEPS)
  return()
endif()

# Never installed: the libraries that are loaded by name, linked, so that dpkg-shlibdeps can see them.
find_library(HIDAPI_LIBRARY hidapi-hidraw REQUIRED)
find_library(UDEV_LIBRARY udev REQUIRED)
add_library(orvex_loaded_libraries MODULE packaging/debian/loaded_libraries.cpp)
target_include_directories(orvex_loaded_libraries SYSTEM PRIVATE ${HIDAPI_INCLUDE_DIR} ${UDEV_INCLUDE_DIR})
target_link_libraries(orvex_loaded_libraries PRIVATE ${HIDAPI_LIBRARY} ${UDEV_LIBRARY})
set_target_properties(orvex_loaded_libraries PROPERTIES LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/debian)

set(CPACK_GENERATOR DEB)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime virtual development tools)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGE_NAME orvex-headset-plugin)
# Each package has a summary of its own.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_PACKAGE_CONTACT "Orvex headset plug-in developers <headset-plugin@orvex.example>")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

# orvex_library_package(COMPONENT NAME libraries...): tells dpkg which package a program needs that is linked with one of
# these, and to have the loader look again when they come or go.
function(orvex_library_package component name)
  string(TOUPPER ${component} COMPONENT)
  set(folder ${PROJECT_BINARY_DIR}/debian/${component})
  set(shlibs "")
  foreach(library ${ARGN})
    string(APPEND shlibs "lib${library} ${PROJECT_VERSION_MAJOR} ${name} (>= ${PROJECT_VERSION})\n")
  endforeach()
  file(CONFIGURE OUTPUT ${folder}/shlibs CONTENT "${shlibs}")
  file(CONFIGURE OUTPUT ${folder}/triggers CONTENT "activate-noawait ldconfig\n")
  set(CPACK_DEBIAN_${COMPONENT}_PACKAGE_CONTROL_EXTRA ${folder}/shlibs ${folder}/triggers PARENT_SCOPE)
endfunction()

# orvex_package(COMPONENT NAME SECTION SUMMARY DESCRIPTION [DEPENDS components...])
function(orvex_package component name section summary description)
  cmake_parse_arguments(PACKAGE "" "" "DEPENDS" ${ARGN})
  string(TOUPPER ${component} COMPONENT)
  set(CPACK_DEBIAN_${COMPONENT}_PACKAGE_NAME ${name} PARENT_SCOPE)
  set(CPACK_DEBIAN_${COMPONENT}_PACKAGE_SECTION ${section} PARENT_SCOPE)
  set(CPACK_DEBIAN_${COMPONENT}_DESCRIPTION "${summary}\n${description}" PARENT_SCOPE)
  set(CPACK_COMPONENT_${COMPONENT}_DEPENDS ${PACKAGE_DEPENDS} PARENT_SCOPE)
endfunction()

orvex_package(runtime liborvex-headset-plugin${PROJECT_VERSION_MAJOR} libs
  "call control from USB headsets, for calling clients"
  "A calling client loads this library so that people can work their calls
from a USB headset: it finds the headsets, keeps their indicators in step
with the calls, and turns each press of a button into a request for one
call. It works from each headset's own HID report descriptor.")
orvex_package(virtual liborvex-headset-plugin-virtual${PROJECT_VERSION_MAJOR} libs
  "call control from USB headsets, on virtual headsets"
  "The headset plug-in on headsets that live in the process, which a program
plugs, presses, watches and unplugs: for the tests of calling clients. A
second library has the same headsets as devices of the kernel.")
orvex_library_package(runtime liborvex-headset-plugin${PROJECT_VERSION_MAJOR} orvex_headset_plugin)
orvex_library_package(virtual liborvex-headset-plugin-virtual${PROJECT_VERSION_MAJOR}
                      orvex_headset_plugin_virtual orvex_virtual_headset_uhid)
# In place of the one that cpack would write, which calls ldconfig: the trigger does that.
list(APPEND CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/packaging/debian/postinst)
orvex_package(development liborvex-headset-plugin-dev libdevel
  "call control from USB headsets - development files"
  "Headers, and what CMake and pkg-config need, for calling clients that work
with the headset plug-in or test themselves with its virtual headsets."
  DEPENDS runtime virtual)
orvex_package(tools orvex-headset-tools utils
  "tools for USB headsets and calls"
  "The headset program tells which headsets there are, whether calls will work
with them and if not why not, and reads their report descriptors and
reports. The softphone is a calling client for the console that shows the
headset plug-in at work, on real or virtual headsets."
  DEPENDS runtime virtual)

# What each package holds beside what is installed, and what dpkg-shlibdeps makes of the loaded libraries.
set(CPACK_PROJECT_CONFIG_FILE ${PROJECT_SOURCE_DIR}/packaging/debian/dependencies.cmake)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/packaging/debian/documents.cmake)
set(CPACK_ORVEX_SHLIBDEPS ${DPKG_SHLIBDEPS})
set(CPACK_ORVEX_LOADED_LIBRARIES ${PROJECT_BINARY_DIR}/debian/liborvex_loaded_libraries.so)
set(CPACK_ORVEX_WORK_DIR ${PROJECT_BINARY_DIR}/debian/loaded)
set(CPACK_ORVEX_SOURCE_DIR ${PROJECT_SOURCE_DIR})
include(CPack)
