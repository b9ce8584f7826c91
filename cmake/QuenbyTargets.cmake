# The kinds of target that the project has. Each takes SOURCES and LINKS.

# quenby_library(NAME SOURCES ... LINKS ...): a static library for one folder, all of its links public.
function(quenby_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINKS" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_link_libraries(${name} PUBLIC quenby_options ${ARG_LINKS})
  quenby_precompiled(${name})
endfunction()

# quenby_program(NAME SOURCES ... LINKS ...): an executable in bin/.
function(quenby_program name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINKS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE quenby_options ${ARG_LINKS})
endfunction()

# quenby_module(NAME SOURCES ... LINKS ...): a plug-in in lib/quenby/, loaded when it is first needed.
function(quenby_module name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINKS" ${ARGN})
  add_library(${name} MODULE ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE quenby_options ${ARG_LINKS})
  quenby_precompiled(${name})
  set_target_properties(${name} PROPERTIES LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/lib/quenby")
endfunction()

# quenby_test(NAME SOURCES ... LINKS ... [TIMEOUT seconds]): a Qt Test program, run by CTest under its own name.
function(quenby_test name)
  cmake_parse_arguments(ARG "" "TIMEOUT" "SOURCES;LINKS" ${ARGN})
  quenby_test_program(${name} SOURCES ${ARG_SOURCES} LINKS ${ARG_LINKS})
  quenby_add_test(${name} "${ARG_TIMEOUT}" $<TARGET_FILE:${name}>)
endfunction()

# quenby_desktop_test(NAME SOURCES ... LINKS ... [PANEL xfce4|tint2|none] [KEYRING unlocked|locked|none]
#                     [NOTIFICATIONS dunst|xfce4-notifyd|none] [NO_BUS] [TIMEOUT seconds]):
# the same, run inside a private virtual desktop that has these parts; scripts/desktop/session.sh says what they are.
function(quenby_desktop_test name)
  cmake_parse_arguments(ARG "NO_BUS" "TIMEOUT;PANEL;KEYRING;NOTIFICATIONS" "SOURCES;LINKS" ${ARGN})
  if(ARG_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "quenby_desktop_test(${name}): unknown arguments ${ARG_UNPARSED_ARGUMENTS}")
  endif()
  set(session "${CMAKE_SOURCE_DIR}/scripts/desktop/session.sh")
  foreach(part IN ITEMS PANEL KEYRING NOTIFICATIONS)
    if(ARG_${part})
      string(TOLOWER "--${part}" option)
      list(APPEND session ${option} ${ARG_${part}})
    endif()
  endforeach()
  if(ARG_NO_BUS)
    list(APPEND session --no-bus)
  endif()
  quenby_test_program(${name} SOURCES ${ARG_SOURCES} LINKS ${ARG_LINKS})
  quenby_add_test(${name} "${ARG_TIMEOUT}" ${session} -- $<TARGET_FILE:${name}>)
  set_tests_properties(${name} PROPERTIES LABELS desktop)
endfunction()

# What the two above share: the program, and how CTest runs it.
function(quenby_test_program name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINKS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE quenby_options Qt6::Test ${ARG_LINKS})
  quenby_precompiled(${name})
  # A test includes its .moc file itself. What is left for AUTOMOC's own file is nothing, unless there are headers, and
  # reading the precompiled header would be all its work.
  if(NOT ARG_SOURCES MATCHES "\\.h(;|$)")
    set_source_files_properties("${CMAKE_CURRENT_BINARY_DIR}/${name}_autogen/mocs_compilation.cpp"
      PROPERTIES SKIP_PRECOMPILE_HEADERS ON)
  endif()
endfunction()

function(quenby_add_test name timeout)
  if(NOT timeout)
    set(timeout 120)
  endif()
  add_test(NAME ${name} COMMAND ${ARGN})
  set_tests_properties(${name} PROPERTIES TIMEOUT ${timeout})
endfunction()
