# What is installed, and where: the usual places of GNUInstallDirs under the prefix. Each component is a package, too.
#
#   runtime      the plug-in, and the udev rules that open headsets to the person at the machine
#   virtual      the libraries of virtual headsets
#   development  headers, links, and what find_package() and pkg-config need, for both
#   tools        headset and softphone, with manual pages and completion
include(CMakePackageConfigHelpers)

set(orvex_config_folder ${CMAKE_INSTALL_LIBDIR}/cmake/${PROJECT_NAME})

# orvex_install_library(TARGET COMPONENT): a library for clients to link with.
function(orvex_install_library target component)
  install(TARGETS ${target} EXPORT ${PROJECT_NAME}-targets
          LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT ${component} NAMELINK_COMPONENT development)
endfunction()

# orvex_install_pkg_config(TARGET DESCRIPTION): the same library for pkg-config, by the name of its target. The file is
# relative to where it lies, so that the installed tree can be moved.
function(orvex_install_pkg_config target description)
  file(RELATIVE_PATH libdir ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_FULL_LIBDIR})
  file(RELATIVE_PATH includedir ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_FULL_INCLUDEDIR})
  set(file ${PROJECT_BINARY_DIR}/pkgconfig/${target}.pc)
  configure_file(${PROJECT_SOURCE_DIR}/packaging/pkgconfig/library.pc.in ${file} @ONLY)
  install(FILES ${file} DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
endfunction()

orvex_install_library(orvex_headset_plugin         runtime)
orvex_install_library(orvex_headset_plugin_virtual virtual)
orvex_install_library(orvex_virtual_headset_uhid   virtual)
orvex_install_pkg_config(orvex_headset_plugin         "Call control from USB headsets")
orvex_install_pkg_config(orvex_headset_plugin_virtual "Call control from USB headsets, on virtual ones")
orvex_install_pkg_config(orvex_virtual_headset_uhid   "Virtual headsets for every program of the system")

install(FILES packaging/linux/70-orvex-headset.rules DESTINATION lib/udev/rules.d COMPONENT runtime)

install(TARGETS orvex_headset_plugin_headers EXPORT ${PROJECT_NAME}-targets)
install(DIRECTORY include/orvex DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)

configure_package_config_file(packaging/cmake/config.cmake.in ${PROJECT_BINARY_DIR}/${PROJECT_NAME}-config.cmake
                              INSTALL_DESTINATION ${orvex_config_folder})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/${PROJECT_NAME}-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/${PROJECT_NAME}-config.cmake
              ${PROJECT_BINARY_DIR}/${PROJECT_NAME}-config-version.cmake
        DESTINATION ${orvex_config_folder} COMPONENT development)
install(EXPORT ${PROJECT_NAME}-targets NAMESPACE orvex:: DESTINATION ${orvex_config_folder} COMPONENT development)

if(NOT ORVEX_TOOLS)
  return()
endif()
install(TARGETS headset softphone RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
install(FILES packaging/man/headset.1 packaging/man/softphone.1
        DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
# Debian has the functions of packages in a folder of their own.
set(ORVEX_ZSH_COMPLETIONS ${CMAKE_INSTALL_DATADIR}/zsh/site-functions CACHE STRING "Folder for zsh's completion functions")
foreach(tool headset softphone)
  install(FILES packaging/completion/${tool}.bash RENAME ${tool}
          DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT tools)
  install(FILES packaging/completion/_${tool} DESTINATION ${ORVEX_ZSH_COMPLETIONS} COMPONENT tools)
endforeach()
