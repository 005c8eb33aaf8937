# Fails when the machine code of a library file holds a fused multiply-add instruction, of
# x86-64 (vfmadd..., vfmsub..., vfnmadd..., vfnmsub...) or of ARM64 (fmadd, fmsub, fnmadd,
# fnmsub, and the vector fmla, fmls): every product must round on its own, inside the
# functions compiled for AVX2 and AVX-512F too. With WIDE_LANES on (x86-64), the AVX2 and
# AVX-512F adds must be found in each file, or the check would pass on code it never saw.
#   -DOBJDUMP=<objdump>  -DFILES=<file;file...>  [-DWIDE_LANES=ON]
if(NOT OBJDUMP OR NOT EXISTS "${OBJDUMP}")
  message("objdump not found: check skipped")
  return()
endif()
foreach(file IN LISTS FILES)
  execute_process(COMMAND "${OBJDUMP}" -d --no-show-raw-insn "${file}"
                  OUTPUT_VARIABLE code RESULT_VARIABLE failed ERROR_VARIABLE errors)
  if(failed OR code STREQUAL "")
    message(FATAL_ERROR "cannot disassemble ${file}: ${errors}")
  endif()
  string(REGEX MATCHALL "[ \t](v?fn?m(add|sub)[0-9a-z]*|fml[as])[ \t][^\n]*" fused "${code}")
  if(fused)
    list(LENGTH fused count)
    list(SUBLIST fused 0 10 first)
    list(JOIN first "\n" first)
    message(FATAL_ERROR "${count} fused multiply-add instructions in ${file}, for example:\n${first}")
  endif()
  if(WIDE_LANES AND (NOT code MATCHES "vaddpd[^\n]*%ymm" OR NOT code MATCHES "vaddpd[^\n]*%zmm"))
    message(FATAL_ERROR "${file} holds no AVX2 or no AVX-512F lane arithmetic to check")
  endif()
  string(REGEX MATCHALL "\n[0-9a-f]+ <[^>]+>:" functions "${code}")
  list(LENGTH functions count)
  message(STATUS "no fused multiply-add in ${count} functions of ${file}")
endforeach()
