# Warnings as errors for the project's own code; dependencies are untouched.
function(velmora_target target)
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion
    -Wnon-virtual-dtor -Woverloaded-virtual -Wold-style-cast -Werror)
  # GCC's own option: clang, Apple's compiler, does not know it and -Werror would stop there.
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(${target} PRIVATE -Wshadow=local)
  endif()
  velmora_known_false_positives(${target})
  target_compile_features(${target} PUBLIC cxx_std_20)
endfunction()

# GCC 12 reports -Wrestrict inside libstdc++ for `"literal" + std::string` at -O3, and
# -Wmaybe-uninitialized inside std::optional, std::variant, std::regex and std::function;
# both are compiler bugs, not findings in our code (ASan and UBSan check the real thing).
function(velmora_known_false_positives target)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(${target} PRIVATE -Wno-restrict -Wno-maybe-uninitialized)
  endif()
endfunction()

# Tests may use gtest macros that trip the stricter conversion warnings.
function(velmora_test_target target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Werror)
  velmora_known_false_positives(${target})
  target_compile_features(${target} PUBLIC cxx_std_20)
endfunction()

# float-cast-overflow is not part of "undefined" in every compiler: a reading such as NaN or 1e300
# cast to an integer must be caught too.
if(VELMORA_SANITIZE)
  add_compile_options(-fsanitize=address,undefined,float-cast-overflow -fno-omit-frame-pointer
                      -fno-sanitize-recover=all)
  add_link_options(-fsanitize=address,undefined,float-cast-overflow)
endif()

# Fuzzing: every library gets libFuzzer's coverage instrumentation and both sanitizers; only the
# programs in fuzz/ link libFuzzer itself. Clang does not know GCC's -Wshadow=local, and takes
# sd-bus's SD_BUS_ERROR_NULL (a C99 compound literal) for an extension: a warning here, no error.
if(VELMORA_FUZZ)
  if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    message(FATAL_ERROR "VELMORA_FUZZ needs clang: configure with CC=clang CXX=clang++")
  endif()
  add_compile_options(-fsanitize=fuzzer-no-link,address,undefined -fno-omit-frame-pointer
                      -fno-sanitize-recover=all -Wno-unknown-warning-option -Wno-error=c99-extensions)
  add_link_options(-fsanitize=address,undefined)
endif()

# One test executable per subsystem, discovered test by test by CTest.
function(velmora_add_test_suite name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  velmora_test_target(${name})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR}/tests)
  target_link_libraries(${name} PRIVATE ${ARG_LIBS} GTest::gtest GTest::gtest_main Threads::Threads)
  gtest_discover_tests(${name}
    WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
    PROPERTIES ENVIRONMENT "VELMORA_SOURCE_DIR=${PROJECT_SOURCE_DIR};VELMORA_BUILD_DIR=${PROJECT_BINARY_DIR}"
    DISCOVERY_TIMEOUT 60)
endfunction()
