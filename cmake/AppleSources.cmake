# The Objective-C++ and Apple-only sources are listed once, beside the library they belong to.
# velmora_apple_sources(VAR file...) records them for the Apple syntax check that runs on every
# platform (tests/apple_syntax/) and sets VAR to their full paths, which a Mac build adds to the
# library.
function(velmora_apple_sources variable)
  list(TRANSFORM ARGN PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/ OUTPUT_VARIABLE files)
  set_property(GLOBAL APPEND PROPERTY VELMORA_APPLE_SOURCES ${files})
  set(${variable} ${files} PARENT_SCOPE)
endfunction()
