# Installs BUILD, and has it lie in TREE, which is a folder in BUILD.
file(REMOVE_RECURSE ${TREE} ${TREE}.first)
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD} --prefix ${TREE}.first COMMAND_ERROR_IS_FATAL ANY)
file(RENAME ${TREE}.first ${TREE})

# What clients read names neither the place of the build nor the first one of the tree.
file(GLOB_RECURSE texts ${TREE}/*.cmake ${TREE}/*.pc)
if(NOT texts)
  message(FATAL_ERROR "nothing was installed that clients read")
endif()
foreach(text IN LISTS texts)
  file(READ ${text} content)
  string(FIND "${content}" "${BUILD}" place)
  if(NOT place EQUAL -1)
    message(FATAL_ERROR "${text} names ${BUILD}")
  endif()
endforeach()
