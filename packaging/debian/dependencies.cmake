# Run by cpack before it makes the packages: what the libraries that are loaded by name belong to.
file(WRITE ${CPACK_ORVEX_WORK_DIR}/debian/control "Source: loaded\n\nPackage: loaded\nArchitecture: any\n")
execute_process(COMMAND ${CPACK_ORVEX_SHLIBDEPS} -O -e${CPACK_ORVEX_LOADED_LIBRARIES}
                WORKING_DIRECTORY ${CPACK_ORVEX_WORK_DIR}
                OUTPUT_VARIABLE found ERROR_QUIET COMMAND_ERROR_IS_FATAL ANY)
string(REGEX REPLACE "^.*shlibs:Depends=|\n.*$" "" found "${found}")
if(NOT found MATCHES "hidapi" OR NOT found MATCHES "udev")
  message(FATAL_ERROR "The packages of the libraries that are loaded by name were not found: ${found}")
endif()
# The library, and the tool `headset`, which has the library's code.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS "${found}")
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "${found}")
