# The fuzz entry points, each fuzz/<name>_fuzz.cpp. Shared by the libFuzzer build (fuzz/) and the
# corpus replay that the test suite runs (tests/fuzz/), so an entry point listed here is built by
# both.
set(VELMORA_FUZZ_TARGETS
  history_file
  launch_options
  live_json
  log_escape
  marker_json
  osascript_outcome
  rfc3339
  settings_json
  smc_block
  smc_reader
  smc_temperature
  thermal_state_name
  utf8_check)
# The Linux readers are built on Linux only.
if(VELMORA_PLATFORM STREQUAL "linux")
  list(APPEND VELMORA_FUZZ_TARGETS
    linux_battery
    linux_cpu_list
    linux_label_text
    linux_loadavg
    linux_meminfo
    linux_pid_stat
    linux_pressure
    linux_proc_stat
    linux_rapl
    linux_sysfs_integer
    linux_thermal_limits
    linux_tree)
endif()

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
