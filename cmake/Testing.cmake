# The test suites: GoogleTest executables that CTest knows case by case, and the defaults every
# test gets.

# A unit test case takes well under a second, under the sanitizers a few: one that has not
# finished in a minute hangs, and CTest stops it rather than the whole run. The suites that
# wait in real time (e2e, gui, tray, faults, pages, packaging) set a longer TIMEOUT of their own.
set(DART_TESTING_TIMEOUT 60 CACHE STRING "Seconds a test without a TIMEOUT of its own may run")
set_property(GLOBAL PROPERTY CTEST_TARGETS_ADDED 1)  # no dashboard targets
include(CTest)
enable_testing()
find_package(GTest REQUIRED)
include(GoogleTest)

# One test executable per subsystem, discovered test by test by CTest and labelled "unit". A
# suite sees the headers of the libraries it links and the shared helpers in tests/, nothing else.
function(velmora_add_test_suite name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  velmora_test_target(${name})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  target_link_libraries(${name} PRIVATE ${ARG_LIBS} GTest::gtest GTest::gtest_main Threads::Threads)
  gtest_discover_tests(${name}
    WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
    PROPERTIES LABELS unit
      ENVIRONMENT "VELMORA_SOURCE_DIR=${PROJECT_SOURCE_DIR};VELMORA_BUILD_DIR=${PROJECT_BINARY_DIR}"
    DISCOVERY_TIMEOUT 60)
endfunction()
