# Compile settings shared by every target of the project.
#
# Results must be identical to the last bit, so the compiler may neither fuse a*b+c into
# one rounding (-ffp-contract=off) nor reassociate or assume away NaN and infinity (no
# fast-math option of any kind, no optimisation level that implies one). x86-64
# evaluates float and double in SSE registers, which keeps every float step a float
# rounding.

set(CMAKE_CXX_EXTENSIONS OFF)

add_library(qal_build_flags INTERFACE)
target_compile_features(qal_build_flags INTERFACE cxx_std_17)
target_compile_options(qal_build_flags INTERFACE
  -ffp-contract=off
  -fno-fast-math
  -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wdouble-promotion
  -Wold-style-cast -Wnon-virtual-dtor)

if(QAL_SANITIZE)
  set(qal_sanitizers -fsanitize=address,undefined,float-cast-overflow -fno-sanitize-recover=all)
  target_compile_options(qal_build_flags INTERFACE ${qal_sanitizers} -fno-omit-frame-pointer)
  target_link_options(qal_build_flags INTERFACE ${qal_sanitizers})
endif()
if(QAL_TSAN)
  if(QAL_SANITIZE)
    message(FATAL_ERROR "QAL_TSAN and QAL_SANITIZE cannot be combined: ThreadSanitizer excludes AddressSanitizer")
  endif()
  target_compile_options(qal_build_flags INTERFACE -fsanitize=thread -fno-omit-frame-pointer)
  target_link_options(qal_build_flags INTERFACE -fsanitize=thread)
endif()

# Fuzzing: clang's libFuzzer with AddressSanitizer and UndefinedBehaviorSanitizer. Everything
# gets the coverage instrumentation; only the fuzz targets link libFuzzer's main.
if(QAL_FUZZ)
  if(QAL_SANITIZE OR QAL_TSAN)
    message(FATAL_ERROR "QAL_FUZZ brings its own sanitizers: not with QAL_SANITIZE or QAL_TSAN")
  endif()
  if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    message(FATAL_ERROR "QAL_FUZZ needs clang (libFuzzer), e.g. CMAKE_CXX_COMPILER=clang++-14")
  endif()
  set(qal_fuzz_sanitizers -fsanitize=address,undefined,float-cast-overflow -fno-sanitize-recover=all)
  target_compile_options(qal_build_flags INTERFACE ${qal_fuzz_sanitizers} -fsanitize=fuzzer-no-link
                         -fno-omit-frame-pointer)
  target_link_options(qal_build_flags INTERFACE ${qal_fuzz_sanitizers})
endif()

# qal_apply_build_flags(<target>): the flags above, kept private to <target> so that
# nothing of them leaks into a consumer of the installed package.
function(qal_apply_build_flags target)
  target_link_libraries(${target} PRIVATE $<BUILD_INTERFACE:qal_build_flags>)
endfunction()
