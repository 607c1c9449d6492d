# Instrumented builds of everything below, the project's libraries included: ASan and UBSan
# (VELMORA_SANITIZE, the second half of CI) or libFuzzer's coverage (VELMORA_FUZZ, `make fuzz`).

# float-cast-overflow is not part of "undefined" in every compiler: a reading such as NaN or 1e300
# cast to an integer must be caught too.
# The sanitizer build is compiled at -O1 with line tables only (-g1), the sanitizers' own advice:
# the reports keep their files and lines, and it compiles in less than half the time of -O2 -g.
if(VELMORA_SANITIZE)
  add_compile_options(-fsanitize=address,undefined,float-cast-overflow -fno-omit-frame-pointer
                      -fno-sanitize-recover=all -O1 -g1)
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
