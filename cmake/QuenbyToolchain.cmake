# What every target of the project is built with. The choices live in one INTERFACE target, so that a folder's
# CMakeLists.txt names only its own sources and what it links to.

option(QUENBY_BUILD_TESTS "Build the test suite" ON)
option(QUENBY_BUILD_BENCH "Build the benchmarks" OFF)
option(QUENBY_WERROR "Treat warnings as errors" ON)
set(QUENBY_SANITIZE "" CACHE STRING "Sanitizers, comma separated: address,undefined or thread")
option(QUENBY_COVERAGE "Instrument for coverage" OFF)
option(QUENBY_FUZZ "Build the fuzz targets (needs clang)" OFF)

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_AUTOMOC ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

find_program(QUENBY_CCACHE ccache)
if(QUENBY_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  # Precompiled headers change their time stamp with every build folder; their contents decide.
  set(CMAKE_CXX_COMPILER_LAUNCHER
      "${CMAKE_COMMAND}" -E env "CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime"
      "CCACHE_BASEDIR=${CMAKE_SOURCE_DIR}" "${QUENBY_CCACHE}")
endif()
find_program(QUENBY_MOLD mold)

add_library(quenby_options INTERFACE)
target_include_directories(quenby_options INTERFACE "${CMAKE_SOURCE_DIR}")
target_compile_definitions(quenby_options INTERFACE
  QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_KEYWORDS QT_NO_FOREACH QT_USE_QSTRINGBUILDER
  QUENBY_VERSION="${PROJECT_VERSION}"
  # Assertions hold everywhere but in what people install.
  $<$<NOT:$<CONFIG:Release>>:QT_FORCE_ASSERTS>)
target_compile_options(quenby_options INTERFACE -Wall -Wextra -Wpedantic -Wnon-virtual-dtor -Woverloaded-virtual
  -Wshadow -Wcast-qual -Wformat=2 -Wundef)
# Some libraries ask for it, and a precompiled header is only shared by sources that agree on it.
target_compile_options(quenby_options INTERFACE -pthread)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  target_compile_options(quenby_options INTERFACE -Wduplicated-cond -Wlogical-op -Wuseless-cast
    # At -O3 this compiler takes the empty storage of a std::optional for a variable that was forgotten.
    $<$<CONFIG:Release>:-Wno-maybe-uninitialized>)
endif()
if(QUENBY_WERROR)
  target_compile_options(quenby_options INTERFACE -Werror)
endif()
if(QUENBY_MOLD)
  target_link_options(quenby_options INTERFACE -fuse-ld=mold)
endif()
if(QUENBY_SANITIZE)
  target_compile_options(quenby_options INTERFACE -fsanitize=${QUENBY_SANITIZE} -fno-omit-frame-pointer)
  target_link_options(quenby_options INTERFACE -fsanitize=${QUENBY_SANITIZE})
  # A sanitizer's instrumentation confuses the optimiser's own warnings.
  target_compile_options(quenby_options INTERFACE -Wno-maybe-uninitialized)
endif()
if(QUENBY_FUZZ)
  target_compile_options(quenby_options INTERFACE -fsanitize=fuzzer-no-link,address,undefined -fno-omit-frame-pointer)
  target_link_options(quenby_options INTERFACE -fsanitize=address,undefined)
endif()
if(QUENBY_COVERAGE)
  target_compile_options(quenby_options INTERFACE --coverage)
  target_link_options(quenby_options INTERFACE --coverage)
endif()
