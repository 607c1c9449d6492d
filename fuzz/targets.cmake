# The fuzz entry points: every fuzz/<name>_fuzz.cpp. Shared by the libFuzzer build (fuzz/) and the
# corpus replay that the test suite runs (tests/fuzz/), so a new entry point is picked up by both.
file(GLOB velmora_fuzz_sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_LIST_DIR}/*_fuzz.cpp)
set(VELMORA_FUZZ_TARGETS)
foreach(source IN LISTS velmora_fuzz_sources)
  get_filename_component(name ${source} NAME_WE)
  string(REGEX REPLACE "_fuzz$" "" name ${name})
  # The Linux readers are built on Linux only.
  if(name MATCHES "^linux_" AND NOT VELMORA_PLATFORM STREQUAL "linux")
    continue()
  endif()
  list(APPEND VELMORA_FUZZ_TARGETS ${name})
endforeach()
list(SORT VELMORA_FUZZ_TARGETS)

set(VELMORA_FUZZ_DIR ${CMAKE_CURRENT_LIST_DIR})
set(VELMORA_FUZZ_LIBS velmora_policy velmora_store velmora_actuators velmora_metrics velmora_app_core
    nlohmann_json::nlohmann_json)

# One executable from an entry point and a main: libFuzzer's, or the corpus replay's.
function(velmora_fuzz_executable target name)
  add_executable(${target} ${VELMORA_FUZZ_DIR}/${name}_fuzz.cpp ${ARGN})
  velmora_target(${target})
  target_include_directories(${target} PRIVATE ${VELMORA_FUZZ_DIR})
  target_link_libraries(${target} PRIVATE ${VELMORA_FUZZ_LIBS})
endfunction()
