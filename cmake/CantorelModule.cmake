# How every folder of the tree becomes a target. Options for all code stand here and nowhere else.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VERIFY_INTERFACE_HEADER_SETS ON)

set(CANTOREL_SANITIZE "" CACHE STRING "Sanitizers for -fsanitize=, empty for none")

add_library(cantorel_options INTERFACE)
target_compile_definitions(cantorel_options INTERFACE QT_NO_KEYWORDS QT_NO_FOREACH)
target_compile_options(cantorel_options INTERFACE -Wall -Wextra -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # The real-time marks are attributes of another compiler; this one is told to pass over them.
  target_compile_options(cantorel_options INTERFACE -Wno-attributes=clang::)
elseif(CANTOREL_SANITIZE MATCHES "fuzzer")
  # The older compiler that brings it does not know the real-time marks, and warns of what the code's own one does not.
  target_compile_options(cantorel_options INTERFACE -Wno-unknown-attributes -Wno-error)
elseif(CANTOREL_SANITIZE STREQUAL "realtime")
  # It holds what is marked to the mark, before it runs too; what it can't know, such as the caller's own procedure, it
  # only warns of. The others are warnings of this compiler that the code's own one does not have.
  target_compile_options(cantorel_options INTERFACE -Wfunction-effects -Wno-error=function-effects
    -Wno-missing-designated-field-initializers -Wno-deprecated-declarations)
endif()
# RelWithDebInfo carries line tables only: full debug information triples the build tree for little.
target_compile_options(cantorel_options INTERFACE $<$<CONFIG:RelWithDebInfo>:-g1>)
if(CANTOREL_SANITIZE)
  target_compile_options(cantorel_options INTERFACE -fsanitize=${CANTOREL_SANITIZE} -fno-omit-frame-pointer -O1)
  target_link_options(cantorel_options INTERFACE -fsanitize=${CANTOREL_SANITIZE})
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # With the checks between its lines this compiler takes sound code for one that reads what was never written.
    target_compile_options(cantorel_options INTERFACE -Wno-maybe-uninitialized)
  endif()
endif()

# The headers of a target. A source includes its own header first, so building it shows that this compiles alone; those
# without one are compiled by the target all_verify_interface_header_sets.
function(cantorel_headers TARGET SCOPE HEADERS SOURCES)
  set(alone ${HEADERS})
  foreach(source ${SOURCES})
    cmake_path(REPLACE_EXTENSION source LAST_ONLY h OUTPUT_VARIABLE own)
    list(REMOVE_ITEM alone ${own})
  endforeach()
  target_sources(${TARGET} ${SCOPE} FILE_SET HEADERS BASE_DIRS ${PROJECT_SOURCE_DIR}/src FILES ${HEADERS})
  if(alone)
    target_sources(${TARGET} ${SCOPE} FILE_SET alone TYPE HEADERS BASE_DIRS ${PROJECT_SOURCE_DIR}/src FILES ${alone})
    set_target_properties(${TARGET} PROPERTIES INTERFACE_HEADER_SETS_TO_VERIFY alone)
  else()
    set_target_properties(${TARGET} PROPERTIES VERIFY_INTERFACE_HEADER_SETS OFF)
  endif()
endfunction()

# Half of the time that a source takes to build goes into the headers of Qt and of the standard library: the release
# build reads the common ones once, those of the foundation or the target's own. All other presets build each source by
# itself, which shows what it does not include.
function(cantorel_precompiled TARGET HEADER)
  if(NOT CMAKE_BUILD_TYPE STREQUAL "RelWithDebInfo" OR CANTOREL_SANITIZE)
    return()
  endif()
  if(HEADER)
    target_precompile_headers(${TARGET} PRIVATE ${HEADER})
  else()
    target_precompile_headers(${TARGET} REUSE_FROM cantorel_foundation)
  endif()
  # What PipeWire defines for whoever uses it: headers that were precompiled without it don't serve with it.
  target_compile_definitions(${TARGET} PRIVATE _REENTRANT)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # It forgets which attributes are meant where headers are precompiled.
    target_compile_options(${TARGET} PRIVATE -Wno-attributes)
  endif()
endfunction()

# cantorel_module(NAME [LOADED_AS file] [PRECOMPILED header] [SOURCES ...] [HEADERS ...] [LINKS ...] [PRIVATE_LINKS ...])
# The static library cantorel_NAME of the current folder. Its headers are included by their path below src/. With
# LOADED_AS it is a shared object of that name in lib/cantorel instead, which the program loads when it first needs it.
function(cantorel_module NAME)
  cmake_parse_arguments(M "" "LOADED_AS;PRECOMPILED" "SOURCES;HEADERS;LINKS;PRIVATE_LINKS" ${ARGN})
  set(kind STATIC)
  set(scope PUBLIC)
  if(M_LOADED_AS)
    set(kind MODULE)
  elseif(NOT M_SOURCES)
    set(kind INTERFACE)
    set(scope INTERFACE)
  endif()
  add_library(cantorel_${NAME} ${kind} ${M_SOURCES})
  cantorel_headers(cantorel_${NAME} ${scope} "${M_HEADERS}" "${M_SOURCES}")
  target_include_directories(cantorel_${NAME} ${scope} ${PROJECT_SOURCE_DIR}/src)
  target_link_libraries(cantorel_${NAME} ${scope} cantorel_options ${M_LINKS})
  # Product code says what a text is; tests may write plain literals.
  if(M_SOURCES)
    target_compile_definitions(cantorel_${NAME} PRIVATE QT_NO_CAST_FROM_ASCII)
    cantorel_precompiled(cantorel_${NAME} "${M_PRECOMPILED}")
  endif()
  if(M_LOADED_AS)
    set_target_properties(cantorel_${NAME} PROPERTIES PREFIX "" OUTPUT_NAME ${M_LOADED_AS}
      LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib/cantorel)
    install(TARGETS cantorel_${NAME} LIBRARY DESTINATION lib/cantorel)
    add_dependencies(cantorel_installed cantorel_${NAME})
  endif()
  if(M_PRIVATE_LINKS)
    target_link_libraries(cantorel_${NAME} PRIVATE ${M_PRIVATE_LINKS})
  endif()
endfunction()

# cantorel_part(FILE SOURCES ... HEADERS ... LINKS ...)
# A program that only our programs start, as lib/cantorel/FILE.
function(cantorel_part FILE)
  cmake_parse_arguments(P "" "" "SOURCES;HEADERS;LINKS" ${ARGN})
  add_executable(${FILE} ${P_SOURCES})
  cantorel_headers(${FILE} PRIVATE "${P_HEADERS}" "${P_SOURCES}")
  target_include_directories(${FILE} PRIVATE ${PROJECT_SOURCE_DIR}/src)
  target_link_libraries(${FILE} PRIVATE cantorel_options ${P_LINKS})
  target_compile_definitions(${FILE} PRIVATE QT_NO_CAST_FROM_ASCII)
  set_target_properties(${FILE} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib/cantorel)
  install(TARGETS ${FILE} RUNTIME DESTINATION lib/cantorel)
  add_dependencies(cantorel_installed ${FILE})
endfunction()

# cantorel_tests(NAME SOURCES ... LINKS ... [PROPERTIES ...])
# A GoogleTest program; each case is a CTest entry of its own, run in a process and a home folder of its own. Its label is
# the folder below tests/: unit, contract, world or window.
function(cantorel_tests NAME)
  cmake_parse_arguments(T "" "" "SOURCES;LINKS;PROPERTIES" ${ARGN})
  add_executable(${NAME} ${T_SOURCES})
  target_link_libraries(${NAME} PRIVATE cantorel_test_support ${T_LINKS})
  target_precompile_headers(${NAME} REUSE_FROM cantorel_test_support)
  set_target_properties(${NAME} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
  set(limit 120)
  if(CANTOREL_SANITIZE)
    set(limit 600) # the longest cases take ten times as long there
  endif()
  cmake_path(RELATIVE_PATH CMAKE_CURRENT_SOURCE_DIR BASE_DIRECTORY ${PROJECT_SOURCE_DIR}/tests OUTPUT_VARIABLE label)
  string(REGEX REPLACE "/.*" "" label ${label})
  gtest_discover_tests(${NAME} DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT ${limit} LABELS ${label} ${T_PROPERTIES})
endfunction()
