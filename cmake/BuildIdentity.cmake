# Run as a script while building: writes the header OUTPUT, which says from which commit the sources in SOURCE are. A
# header that would read the same is left alone, so that nothing is compiled again for it. GIT may be empty.
set(identity "release") # sources that are no checkout of their own repository
if(GIT)
  execute_process(COMMAND "${GIT}" -C "${SOURCE}" rev-parse --show-toplevel
    OUTPUT_VARIABLE top OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET RESULT_VARIABLE failed)
  if(NOT failed)
    file(REAL_PATH "${top}" top)
    file(REAL_PATH "${SOURCE}" source)
    if(top STREQUAL source)
      execute_process(COMMAND "${GIT}" -C "${SOURCE}" rev-parse --short=9 HEAD
        OUTPUT_VARIABLE commit OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
      if(commit MATCHES "^[0-9a-f]+$")
        set(identity "${commit}")
      endif()
    endif()
  endif()
endif()

set(text "#pragma once\n\n#define QUENBY_BUILD \"${identity}\"\n")
set(former "")
if(EXISTS "${OUTPUT}")
  file(READ "${OUTPUT}" former)
endif()
if(NOT former STREQUAL text)
  file(WRITE "${OUTPUT}" "${text}")
endif()
