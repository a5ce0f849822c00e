# Run by cpack for what it is about to pack: each package has its copyright and its changelog, and its manual pages are
# compressed, as Debian has it.
find_program(GZIP gzip REQUIRED)

function(compress file)
  execute_process(COMMAND ${GZIP} -9 -n -f ${file} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# SOURCE_DATE_EPOCH, where it is set, is the time.
string(TIMESTAMP now "%a, %d %b %Y %H:%M:%S +0000" UTC)
# A line that is empty is a full stop there.
file(READ ${CPACK_ORVEX_SOURCE_DIR}/LICENSE licence)
string(STRIP "${licence}" licence)
string(REGEX REPLACE "\n\n" "\n.\n" licence "${licence}")
string(REGEX REPLACE "\n" "\n " licence "${licence}")
string(REGEX MATCH "Copyright \\(c\\) ([^\n]*)" holder "${licence}")
set(holder "${CMAKE_MATCH_1}")

foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${component} COMPONENT)
  set(root ${CPACK_TEMPORARY_DIRECTORY}/${component}/usr)
  set(documents ${root}/share/doc/${CPACK_DEBIAN_${COMPONENT}_PACKAGE_NAME})
  configure_file(${CPACK_ORVEX_SOURCE_DIR}/packaging/debian/copyright.in ${documents}/copyright @ONLY)
  configure_file(${CPACK_ORVEX_SOURCE_DIR}/packaging/debian/changelog.in ${documents}/changelog @ONLY)
  compress(${documents}/changelog)
  file(GLOB manuals ${root}/share/man/*/*.[1-9])
  foreach(manual IN LISTS manuals)
    compress(${manual})
  endforeach()
endforeach()
