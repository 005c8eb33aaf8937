# Fails when the machine code of a library file holds a fused multiply-add: every product
# must round on its own, also inside the functions compiled for AVX2 and AVX-512F. The
# wide add must be there, or the check would pass on code it never saw.
#   -DOBJDUMP=<objdump>  -DFILES=<file;file...>
if(NOT OBJDUMP OR NOT EXISTS "${OBJDUMP}")
  message("objdump not found: check skipped")
  return()
endif()
foreach(file IN LISTS FILES)
  execute_process(COMMAND "${OBJDUMP}" -d --no-show-raw-insn "${file}"
                  OUTPUT_VARIABLE code RESULT_VARIABLE failed ERROR_VARIABLE errors)
  if(failed)
    message(FATAL_ERROR "objdump failed on ${file}: ${errors}")
  endif()
  string(REGEX MATCHALL "vfn?m(add|sub)[a-z0-9]*" fused "${code}")
  if(fused)
    list(REMOVE_DUPLICATES fused)
    message(FATAL_ERROR "${file} holds fused multiply-adds: ${fused}")
  endif()
  if(NOT code MATCHES "vaddpd[^\n]*%ymm" OR NOT code MATCHES "vaddpd[^\n]*%zmm")
    message(FATAL_ERROR "${file} holds no AVX2 or no AVX-512F lane arithmetic to check")
  endif()
endforeach()
message("no fused multiply-add in: ${FILES}")
