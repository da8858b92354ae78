# What is made only to be installed. The target cantorel_installed builds all of that, and no test.
add_custom_target(cantorel_installed)

# cantorel_made(NAME FILE...): the files that a command of the current folder makes are part of every build.
function(cantorel_made NAME)
  add_custom_target(${NAME} ALL DEPENDS ${ARGN})
  add_dependencies(cantorel_installed ${NAME})
endfunction()

# cantorel_compressed(FILE DESTINATION folder): installs the file as gzip makes it, without name and time.
function(cantorel_compressed FILE)
  cmake_parse_arguments(C "" "DESTINATION" "" ${ARGN})
  cmake_path(GET FILE FILENAME name)
  set(made ${CMAKE_CURRENT_BINARY_DIR}/compressed/${name})
  add_custom_command(OUTPUT ${made}.gz
    COMMAND ${CMAKE_COMMAND} -E copy ${FILE} ${made}
    COMMAND gzip -9nf ${made}
    DEPENDS ${FILE}
    VERBATIM)
  cantorel_made(compressed_${name} ${made}.gz)
  install(FILES ${made}.gz DESTINATION ${C_DESTINATION})
endfunction()
