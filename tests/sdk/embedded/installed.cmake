# Installs BUILD, and looks for what is not its own program.
set(tree ${BUILD}/tree)
file(REMOVE_RECURSE ${tree})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD} --prefix ${tree} COMMAND_ERROR_IS_FATAL ANY)
file(GLOB_RECURSE installed RELATIVE ${tree} ${tree}/*)
if(NOT installed STREQUAL "bin/linked")
  message(FATAL_ERROR "installed: ${installed}")
endif()
