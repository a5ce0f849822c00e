# Installs BUILD, and has it lie in TREE.
file(REMOVE_RECURSE ${TREE} ${TREE}.first)
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD} --prefix ${TREE}.first COMMAND_ERROR_IS_FATAL ANY)
file(RENAME ${TREE}.first ${TREE})
