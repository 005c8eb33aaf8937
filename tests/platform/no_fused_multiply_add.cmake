# Fails when the disassembly of BINARY holds a fused multiply-add instruction of x86-64
# (vfmadd..., vfmsub..., vfnmadd..., vfnmsub...) or of ARM64 (fmadd, fmsub, fnmadd, fnmsub,
# and the vector fmla, fmls): proof that -ffp-contract=off reached every object.
# Inputs: OBJDUMP, BINARY.
execute_process(COMMAND "${OBJDUMP}" -d --no-show-raw-insn "${BINARY}"
  OUTPUT_VARIABLE listing RESULT_VARIABLE result ERROR_VARIABLE errors)
if(NOT result EQUAL 0 OR listing STREQUAL "")
  message(FATAL_ERROR "cannot disassemble ${BINARY}: ${errors}")
endif()
string(REGEX MATCHALL "[ \t](v?fn?m(add|sub)[0-9a-z]*|fml[as])[ \t][^\n]*" fused "${listing}")
if(fused)
  list(LENGTH fused count)
  list(SUBLIST fused 0 10 first)
  list(JOIN first "\n" first)
  message(FATAL_ERROR "${count} fused multiply-add instructions in ${BINARY}, for example:\n${first}")
endif()
string(REGEX MATCHALL "\n[0-9a-f]+ <[^>]+>:" functions "${listing}")
list(LENGTH functions count)
message(STATUS "no fused multiply-add in ${count} functions of ${BINARY}")
