# The three kinds of target that the project has. Each takes SOURCES and LINKS.

# quenby_library(NAME SOURCES ... LINKS ...): a static library for one folder, all of its links public.
function(quenby_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINKS" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_link_libraries(${name} PUBLIC quenby_options ${ARG_LINKS})
  target_precompile_headers(${name} PRIVATE "${CMAKE_SOURCE_DIR}/cmake/pch.h")
endfunction()

# quenby_program(NAME SOURCES ... LINKS ...): an executable in bin/.
function(quenby_program name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINKS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE quenby_options ${ARG_LINKS})
endfunction()

# quenby_test(NAME SOURCES ... LINKS ... [TIMEOUT seconds]): a Qt Test program, run by CTest under its own name.
function(quenby_test name)
  cmake_parse_arguments(ARG "" "TIMEOUT" "SOURCES;LINKS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE quenby_options Qt6::Test ${ARG_LINKS})
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 120)
  endif()
  add_test(NAME ${name} COMMAND ${name})
  set_tests_properties(${name} PROPERTIES TIMEOUT ${ARG_TIMEOUT})
endfunction()
