# Installs the built library into a scratch prefix, then configures, builds and runs a
# consumer project that finds it with find_package(QalLib CONFIG REQUIRED). Then moves
# the prefix and builds the same program by hand with the flags of
# `pkg-config --cflags --libs qal`, which must follow the move.
# Inputs: QAL_BUILD_DIR, QAL_CONSUMER_SOURCE, QAL_SCRATCH, QAL_SHARED, QAL_LIBDIR,
# QAL_PKG_CONFIG, QAL_CXX.

function(run)
  execute_process(COMMAND ${ARGV} RESULT_VARIABLE result OUTPUT_VARIABLE out ERROR_VARIABLE out)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "failed (${result}): ${ARGV}\n${out}")
  endif()
endfunction()

file(REMOVE_RECURSE "${QAL_SCRATCH}")
set(prefix "${QAL_SCRATCH}/prefix")
run(${CMAKE_COMMAND} --install "${QAL_BUILD_DIR}" --prefix "${prefix}")
run(${CMAKE_COMMAND} -S "${QAL_CONSUMER_SOURCE}" -B "${QAL_SCRATCH}/consumer"
    "-DCMAKE_PREFIX_PATH=${prefix}" -DCMAKE_BUILD_TYPE=Release)
run(${CMAKE_COMMAND} --build "${QAL_SCRATCH}/consumer")
run("${QAL_SCRATCH}/consumer/qal_consumer")

set(moved "${QAL_SCRATCH}/moved")
file(RENAME "${prefix}" "${moved}")
set(ENV{PKG_CONFIG_LIBDIR} "${moved}/${QAL_LIBDIR}/pkgconfig")  # this qal.pc, never a system one
execute_process(COMMAND "${QAL_PKG_CONFIG}" --cflags --libs qal
                RESULT_VARIABLE result OUTPUT_VARIABLE flags ERROR_VARIABLE flags OUTPUT_STRIP_TRAILING_WHITESPACE)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "pkg-config --cflags --libs qal failed:\n${flags}")
endif()
separate_arguments(flags UNIX_COMMAND "${flags}")
# The consumer's language level and warnings, as in its CMake project.
run("${QAL_CXX}" -std=c++17 -Wall -Wextra -Wconversion -Werror "${QAL_CONSUMER_SOURCE}/main.cpp" ${flags}
    -o "${QAL_SCRATCH}/pkgconfig_consumer")
run(${CMAKE_COMMAND} -E env "LD_LIBRARY_PATH=${moved}/${QAL_LIBDIR}" "${QAL_SCRATCH}/pkgconfig_consumer")

if(QAL_SHARED)
  # The shared object exports the public API and nothing of the internals.
  file(GLOB libs "${moved}/${QAL_LIBDIR}/libqal.so.*.*.*")
  execute_process(COMMAND nm -DC --defined-only ${libs} OUTPUT_VARIABLE symbols RESULT_VARIABLE result)
  if(NOT result EQUAL 0 OR symbols STREQUAL "")
    message(FATAL_ERROR "cannot list the exported symbols of ${libs}")
  endif()
  if(symbols MATCHES "qal::detail")
    message(FATAL_ERROR "internal symbols exported:\n${symbols}")
  endif()
  # The flat API, the container instantiations and the exception's type information,
  # which a host needs to catch it.
  foreach(needed "QAL_GetExtremum" "qal_version" "qal::findExtrema" "t_QalVector<double>::operator\\(\\)\\(int\\)"
                 "t_QalMatrix<double>::t_QalMatrix\\(int, int\\)" "typeinfo for k_QalExceptionIndex"
                 "k_Qal::GaussJordan")
    if(NOT symbols MATCHES "${needed}")
      message(FATAL_ERROR "public API not exported (${needed}):\n${symbols}")
    endif()
  endforeach()
endif()
