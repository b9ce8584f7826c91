# One precompiled header for all libraries, modules and tests. Making one costs as much as compiling five sources, and
# reading it costs hardly more when it is large: so there is one for everybody, not one for each library.

# A compiler takes it only for sources that define all the macros it was made with, in the same way; further ones do no
# harm as long as no header in it asks for them. It is therefore made as for a target that links to Qt6::Core alone:
# of the other modules it knows only where their headers are. -Winvalid-pch, which CMake sets, and QUENBY_WERROR stop
# the build if some target's options ever differ so much that the compiler would go without.
add_library(quenby_pch OBJECT "${CMAKE_SOURCE_DIR}/cmake/pch.cpp")
set_target_properties(quenby_pch PROPERTIES AUTOMOC OFF)
target_link_libraries(quenby_pch PRIVATE quenby_options Qt6::Core)
foreach(module IN ITEMS Gui Widgets)
  target_include_directories(quenby_pch SYSTEM PRIVATE $<TARGET_PROPERTY:Qt6::${module},INTERFACE_INCLUDE_DIRECTORIES>)
endforeach()
target_precompile_headers(quenby_pch PRIVATE "${CMAKE_SOURCE_DIR}/cmake/pch.h")

# quenby_precompiled(TARGET): lets a target that links to Qt6::Core, directly or not, use it.
function(quenby_precompiled target)
  target_precompile_headers(${target} REUSE_FROM quenby_pch)
endfunction()
