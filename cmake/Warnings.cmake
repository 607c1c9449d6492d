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

# Tests may use gtest macros that trip the stricter conversion warnings.
function(velmora_test_target target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Werror)
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
